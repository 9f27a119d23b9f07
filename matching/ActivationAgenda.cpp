#include "matching/ActivationAgenda.h"

#include "knowledge/TavoRule.h"
#include "matching/ReteNetwork.h"
#include "matching/ReteNodes.h"

namespace tavo {

TActivation::TActivation(TRule* Rule, IReteToken Token, TPatternMatchTerminalNode* Node, float Strength)
    : FRule(Rule), FToken(std::move(Token)), FNode(Node), FStrength(1.0f) {
  SetStrength(Strength);
}

TActivation::~TActivation() {
  FDestroying = true;
  if (FNode) FNode->Deactivate(this);
  FNode = nullptr;
}

void TActivation::SetStrength(float Value) {
  if (Value == FStrength) return;
  FStrength = Value < 0 ? 0.0f : Value > 1 ? 1.0f : Value;
}

TActivation* TActivation::Clone() const { return new TActivation(FRule, FToken, FNode); }

TActivation* TActivation::CloneIntoNode() {
  if (!FNode || !FInNode) {
    SetStrength(1.0f);
    return this;
  }
  TActivation* New = Clone();
  FNode->ReplaceActivation(this, New);
  return New;
}

void TActivation::Assign(const TPersistent* Source) {
  if (auto* Activation = dynamic_cast<const TActivation*>(Source)) {
    FRule = Activation->FRule;
    FToken = Activation->FToken;
    FNode = Activation->FNode;
    FStrength = Activation->FStrength;
    return;
  }
  TPersistent::Assign(Source);
}

bool TActivation::Fire() {
  FRule->Fire(FToken.Get());
  if (FNode) FNode->RuleFired(this);
  return true;
}

String TActivation::ToString() const {
  return IntToStr(FRule ? FRule->GetSalience() : 0) + u" " + (FRule ? FRule->GetRuleName() : String()) + u" : " +
         (FToken ? FToken->GetToFactsString() : String()) + u" (" + Format(u"%.4f", double(FStrength)) + u")";
}

// TActivationAgenda

struct TActivationAgenda::TNode {
  TActivation* Activation;
  int Salience;
  uint32_t Priority;
  int Size = 1;
  TNode* Left = nullptr;
  TNode* Right = nullptr;
  TNode* Parent = nullptr;
};

TActivation* TActivationAgenda::TIterator::operator*() const { return FNode->Activation; }

TActivationAgenda::TIterator& TActivationAgenda::TIterator::operator++() {
  // In order: the leftmost of the right subtree, or up past right children.
  if (FNode->Right) {
    FNode = FNode->Right;
    while (FNode->Left) FNode = FNode->Left;
    return *this;
  }
  const TNode* Child = FNode;
  FNode = FNode->Parent;
  while (FNode && FNode->Right == Child) {
    Child = FNode;
    FNode = FNode->Parent;
  }
  return *this;
}

TActivationAgenda::TIterator TActivationAgenda::begin() const {
  const TNode* Node = FRoot;
  while (Node && Node->Left) Node = Node->Left;
  return TIterator(Node);
}

int TActivationAgenda::Size(const TNode* Node) { return Node ? Node->Size : 0; }

void TActivationAgenda::Update(TNode* Node) {
  Node->Size = 1 + Size(Node->Left) + Size(Node->Right);
  if (Node->Left) Node->Left->Parent = Node;
  if (Node->Right) Node->Right->Parent = Node;
}

void TActivationAgenda::Split(TNode* Tree, int Count, TNode*& Left, TNode*& Right) {
  if (!Tree) {
    Left = Right = nullptr;
    return;
  }
  if (Size(Tree->Left) < Count) {
    Split(Tree->Right, Count - Size(Tree->Left) - 1, Tree->Right, Right);
    Left = Tree;
  } else {
    Split(Tree->Left, Count, Left, Tree->Left);
    Right = Tree;
  }
  Update(Tree);
  if (Left) Left->Parent = nullptr;
  if (Right) Right->Parent = nullptr;
}

TActivationAgenda::TNode* TActivationAgenda::Merge(TNode* Left, TNode* Right) {
  if (!Left || !Right) return Left ? Left : Right;
  if (Left->Priority > Right->Priority) {
    Left->Right = Merge(Left->Right, Right);
    Update(Left);
    return Left;
  }
  Right->Left = Merge(Left, Right->Left);
  Update(Right);
  return Right;
}

const TActivationAgenda::TNode* TActivationAgenda::At(int Index) const {
  const TNode* Node = FRoot;
  // The ends, which the placing by salience reads for every new entry,
  // without the sizes of the subtrees passed.
  if (Node && Index == 0) {
    while (Node->Left) Node = Node->Left;
    return Node;
  }
  if (Node && Index == Node->Size - 1) {
    while (Node->Right) Node = Node->Right;
    return Node;
  }
  while (Node) {
    int LeftSize = Size(Node->Left);
    if (Index < LeftSize) {
      Node = Node->Left;
    } else if (Index == LeftSize) {
      return Node;
    } else {
      Index -= LeftSize + 1;
      Node = Node->Right;
    }
  }
  throw EMekException(Format(SListIndexError, Index));
}

int TActivationAgenda::RankOf(const TNode* Node) {
  int Rank = Size(Node->Left);
  for (const TNode* Child = Node; Child->Parent; Child = Child->Parent)
    if (Child->Parent->Right == Child) Rank += Size(Child->Parent->Left) + 1;
  return Rank;
}

TActivationAgenda::TNode* TActivationAgenda::NodeOf(const TActivation* Activation) const {
  auto* Node = static_cast<TNode*>(Activation->FAgendaEntry);
  // An entry of another agenda is not this one's.
  if (!Node) return nullptr;
  const TNode* Top = Node;
  while (Top->Parent) Top = Top->Parent;
  return Top == FRoot ? Node : nullptr;
}

TActivation* TActivationAgenda::GetActivations(int Index) const { return At(Index)->Activation; }

int TActivationAgenda::FindInsertion(TActivation* /*Activation*/) { return -1; }

int TActivationAgenda::Add(TActivation* Activation) {
  int Index = FindInsertion(Activation);
  if (Index < 0 || Index > Count()) Index = Count();
  FSeed ^= FSeed << 13;
  FSeed ^= FSeed >> 17;
  FSeed ^= FSeed << 5;
  auto* Node = new TNode{Activation, Activation->GetRule() ? Activation->GetRule()->GetSalience() : 0, FSeed};
  // A copy in a second agenda leaves the reference to the first.
  if (!Activation->FAgendaEntry) Activation->FAgendaEntry = Node;
  // Down the entries of higher priority to the place the new one heads,
  // counting it into each subtree it joins; there the subtree splits
  // around its index into the new entry's children.
  TNode** Link = &FRoot;
  TNode* Parent = nullptr;
  int Rank = Index;
  while (*Link && (*Link)->Priority > Node->Priority) {
    Parent = *Link;
    ++Parent->Size;
    const int LeftSize = Size(Parent->Left);
    if (Rank <= LeftSize) {
      Link = &Parent->Left;
    } else {
      Rank -= LeftSize + 1;
      Link = &Parent->Right;
    }
  }
  Split(*Link, Rank, Node->Left, Node->Right);
  Update(Node);
  Node->Parent = Parent;
  *Link = Node;
  return Index;
}

int TActivationAgenda::IndexOfData(const TActivation* Activation) const {
  const TNode* Node = NodeOf(Activation);
  return Node ? RankOf(Node) : -1;
}

bool TActivationAgenda::Contains(const TActivation* Activation) const { return NodeOf(Activation) != nullptr; }

void TActivationAgenda::Unlink(TNode* Node) {
  // The node's children, merged, take its place: their priorities are below
  // its own, so the order of priorities holds; the subtrees above it lose
  // one entry each.
  TNode* Replacement = Merge(Node->Left, Node->Right);
  TNode* Parent = Node->Parent;
  if (Replacement) Replacement->Parent = Parent;
  if (!Parent)
    FRoot = Replacement;
  else if (Parent->Left == Node)
    Parent->Left = Replacement;
  else
    Parent->Right = Replacement;
  for (TNode* Above = Parent; Above; Above = Above->Parent) --Above->Size;
  // The reference may be that of an agenda which held the activation first.
  if (Node->Activation->FAgendaEntry == Node) Node->Activation->FAgendaEntry = nullptr;
  delete Node;
}

TActivation* TActivationAgenda::Extract(int Index) {
  auto* Node = const_cast<TNode*>(At(Index));
  TActivation* Activation = Node->Activation;
  Unlink(Node);
  return Activation;
}

bool TActivationAgenda::ExtractData(TActivation* Activation) {
  TNode* Node = NodeOf(Activation);
  if (!Node) return false;
  Unlink(Node);
  return true;
}

void TActivationAgenda::Delete(int Index) {
  TActivation* Activation = Extract(Index);
  if (FFreeData) delete Activation;
}

void TActivationAgenda::Clear() {
  // Every entry leaves before any activation is freed.
  std::vector<TActivation*> Items;
  Items.reserve(size_t(Count()));
  std::vector<TNode*> Pending;
  if (FRoot) Pending.push_back(FRoot);
  std::vector<TNode*> Nodes;
  for (TActivation* Activation : *this) Items.push_back(Activation);
  while (!Pending.empty()) {
    TNode* Node = Pending.back();
    Pending.pop_back();
    if (Node->Left) Pending.push_back(Node->Left);
    if (Node->Right) Pending.push_back(Node->Right);
    if (Node->Activation->FAgendaEntry == Node) Node->Activation->FAgendaEntry = nullptr;
    delete Node;
  }
  FRoot = nullptr;
  if (FFreeData)
    for (TActivation* Activation : Items) delete Activation;
}

String TActivationAgenda::GetString(int Index) const {
  const TNode* Node = At(Index);
  const TActivation* Activation = Node->Activation;
  return IntToStr(Node->Salience) + u" " +
         (Activation->GetRule() ? Activation->GetRule()->GetRuleName() : String()) + u" : " +
         Activation->GetToken()->GetToFactsString() + u" (" +
         Format(u"%.4f", double(Activation->GetStrength())) + u")";
}

int TActivationAgenda::GetSalience(int Index) const { return At(Index)->Salience; }

String TActivationAgenda::ToString() const {
  String Result;
  for (int I = 0; I < Count(); ++I) Result += GetString(I) + u"\r\n";
  return Result;
}

// Placing by salience

int SearchSalience(const TActivationAgenda& Agenda, int Salience, TSearchStrategy Strategy) {
  const int Count = Agenda.Count();
  if (Count == 0) return -1;
  auto At = [&Agenda](int Index) {
    TRule* Rule = Agenda.GetActivations(Index)->GetRule();
    return Rule ? Rule->GetSalience() : 0;
  };
  // Each end is read only when it decides: a read changes nothing.
  if (Strategy == ssDepthFirst) {
    // Ahead of all equals when the top is one.
    if (At(0) <= Salience) return 0;
    if (At(Count - 1) > Salience) return -1;
  } else {
    // Behind all equals when the end is one.
    if (At(Count - 1) >= Salience) return -1;
    if (At(0) < Salience) return 0;
  }
  int Low = 0, High = Count - 1;
  while (Low <= High) {
    int Mid = (Low + High) / 2;
    int Probe = At(Mid);
    if (Salience > Probe)
      High = Mid - 1;
    else if (Salience < Probe)
      Low = Mid + 1;
    else
      return Mid;
  }
  return High + 1;
}

int TTavoAgenda::FindInsertion(TActivation* Activation) {
  if (Count() == 0 || !FEngine) return -1;
  return SearchSalience(*this, Activation->GetRule() ? Activation->GetRule()->GetSalience() : 0,
                        FEngine->GetStrategy());
}

}  // namespace tavo
