#include "matching/ReteNetwork.h"

#include <algorithm>

#include "core/TavoFuzzy.h"
#include "knowledge/TavoFactTemplate.h"
#include "knowledge/TavoRule.h"

namespace tavo {

namespace {

const String STestPatternName = u"test";

// Alpha tests read only their own fact: each binding coordinate of the
// call goes to position 0, so that equal tests on different patterns are
// equal nodes.
void CleanUpBinding(const IFunCall& Call) {
  for (int I = 0; I < Call->GetArgumentCount(); ++I) {
    const ITavoValue& Argument = Call->GetArgument(I);
    if (!Argument) continue;
    if (Argument->HoldsBindingInfo())
      static_cast<TBindingInfo*>(Argument->GetAsObject())->SetFactIndex(0);
    else if (Argument->GetDType() == dtFunCall)
      CleanUpBinding(Argument->GetAsFunCall());
  }
}

// The position in the token of the pattern at Index: test patterns take
// none.
int TokenIndexOf(TRule* Rule, int Index) {
  int Tests = 0;
  for (int I = 0; I < Index; ++I)
    if (Rule->GetPattern(I)->GetName() == STestPatternName) ++Tests;
  return Index - Tests;
}

// Whether a compiled call reads nothing but literals and the facts of a
// token, through binding coordinates: no variable, whose value may change
// between two readings. Deepest rises to the latest fact read.
bool ReadsOnlyFacts(const IFunCall& Call, int& Deepest) {
  for (int I = 0; I < Call->GetArgumentCount(); ++I) {
    const ITavoValue& Argument = Call->GetArgument(I);
    if (!Argument) continue;
    if (Argument->HoldsBindingInfo()) {
      Deepest = std::max(Deepest, static_cast<TBindingInfo*>(Argument->GetAsObject())->GetFactIndex());
    } else if (Argument->GetDType() == dtFunCall) {
      if (!ReadsOnlyFacts(Argument->GetAsFunCall(), Deepest)) return false;
    } else if (Argument->GetDType() == dtVariable || Argument->GetDType() == dtMultiVariable) {
      return false;
    }
  }
  return true;
}

}  // namespace

TReteNetwork::TReteNetwork(TComponent* Owner)
    : TGGraph(Owner),
      FNodeJoinClass(&TJoinNode::StaticClass()),
      FNodeMatchClass(&TPatternMatchNode::StaticClass()),
      FNodeTerminalClass(&TPatternMatchTerminalNode::StaticClass()),
      FNodeTestClass(&TTestNode::StaticClass()) {
  SetDirected(true);
  for (TComponent* Candidate = Owner; Candidate && !FEngine; Candidate = Candidate->GetOwner())
    FEngine = dynamic_cast<IReteEngine*>(Candidate);
}

TReteNetwork::~TReteNetwork() { Clear(); }

void TReteNetwork::SetMinActivationStrength(float Value) {
  FMinActivationStrength = Value < 0 ? 0.0f : Value > 1 ? 1.0f : Value;
}

void TReteNetwork::SetEnabled(bool Value) {
  if (!Value) Clear();
  FEnabled = Value;
}

const std::vector<TReteNode*>* TReteNetwork::GetRuleNodes(const TRule* Rule) const {
  auto Found = FRuleNodes.find(Rule);
  return Found == FRuleNodes.end() ? nullptr : &Found->second;
}

// Activations

void TReteNetwork::FreeActivation(TActivation* Activation) {
  Activation->SetNode(nullptr);
  delete Activation;
}

void TReteNetwork::Activate(TActivation* Activation) {
  if (FEngine) FEngine->AddActivation(Activation);
  if (OnActivation) OnActivation(this, Activation);
}

void TReteNetwork::Deactivate(TActivation* Activation) {
  bool Free = FEngine ? FEngine->RemoveActivation(Activation) : true;
  if (OnDeactivation) OnDeactivation(this, Activation);
  if (Free && !Activation->IsDestroying()) FreeActivation(Activation);
}

void TReteNetwork::RuleFired(TActivation* Activation) {
  if (FEngine) FEngine->RuleFired(Activation);
  if (OnRuleFired) OnRuleFired(this, Activation);
}

float TReteNetwork::FuzzyMatch(const ITavoValue& Fuzzy, const ITavoValue& Other) const {
  return float(FuzzyDegree(*Fuzzy->GetAsFuzzy(), Other.Get()));
}

const IFact& TReteNetwork::GetNullFact() const {
  static const IFact None;
  return FEngine ? FEngine->GetNullFact() : None;
}

// Nodes and roots

TReteNode* TReteNetwork::MakeNode(const TClass* Class) {
  TObject* Object = Class->Create ? Class->Create() : nullptr;
  auto* Node = dynamic_cast<TReteNode*>(Object);
  if (!Node) {
    delete Object;
    throw ETavoException(Format(SUnknownTavoClassName, String(Class->Name)));
  }
  Node->MakeContext(FEngine ? FEngine->GetContext() : nullptr);
  return Node;
}

void TReteNetwork::AddNode(TGGraphNode* Node) {
  TGGraph::AddNode(Node);
  auto* Rete = static_cast<TReteNode*>(Node);
  if (Rete->GetInDegree() == 0) AddRoot(Rete);
}

void TReteNetwork::AddRoot(TReteNode* Node) {
  if (FClearing || std::find(FRoots.begin(), FRoots.end(), Node) != FRoots.end()) return;
  FRoots.push_back(Node);
  FDispatch.clear();
}

void TReteNetwork::RemoveRoot(TReteNode* Node) {
  auto Found = std::find(FRoots.begin(), FRoots.end(), Node);
  if (Found == FRoots.end()) return;
  FRoots.erase(Found);
  FDispatch.clear();
}

void TReteNetwork::NodeGoing(TReteNode* Node) { RemoveRoot(Node); }

void TReteNetwork::ForgetNodeInRuleLists(TReteNode* Node) {
  for (auto& [Rule, Nodes] : FRuleNodes)
    for (size_t I = Nodes.size(); I-- > 0 && Node->GetRuleUseCount() > 0;)
      if (Nodes[I] == Node) {
        Nodes.erase(Nodes.begin() + ptrdiff_t(I));
        Node->SetRuleUseCount(Node->GetRuleUseCount() - 1);
      }
}

void TReteNetwork::RemoveNode(TGGraphNode* Node) {
  auto* Rete = static_cast<TReteNode*>(Node);
  if (!FRoots.empty() || !FRuleNodes.empty()) {
    if (Rete->GetInDegree() == 0) RemoveRoot(Rete);
    if (Rete->GetRuleUseCount() > 0) ForgetNodeInRuleLists(Rete);
  }
  TGGraph::RemoveNode(Node);
}

void TReteNetwork::Extract(TGGraphNode* Node) {
  auto* Rete = static_cast<TReteNode*>(Node);
  if (!FRoots.empty() || !FRuleNodes.empty()) {
    if (Rete->GetInDegree() == 0) RemoveRoot(Rete);
    if (Rete->GetRuleUseCount() > 0) ForgetNodeInRuleLists(Rete);
  }
  TGGraph::Extract(Node);
}

void TReteNetwork::Clear() {
  for (auto& [Rule, Nodes] : FRuleNodes) const_cast<TRule*>(Rule)->RemoveFreeNotification(this);
  FRuleNodes.clear();
  FRoots.clear();
  FDispatch.clear();
  FClearing = true;
  try {
    TGGraph::Clear();
  } catch (...) {
    FClearing = false;
    throw;
  }
  FClearing = false;
}

void TReteNetwork::Notification(TComponent* Component, TOperation Operation) {
  TGGraph::Notification(Component, Operation);
  if (Operation != opRemove) return;
  auto* Rule = dynamic_cast<TRule*>(Component);
  if (Rule && HoldsRule(Rule)) RemoveRule(Rule);
}

std::vector<TReteNode*>& TReteNetwork::RuleList(TRule* Rule) { return FRuleNodes[Rule]; }

// Compiling

TPatternMatchNode* TReteNetwork::CreateSuccessor(TReteNode* Parent, TPatternMatchTest Test, TRule* Rule,
                                                 const TNodeArgsArray& Args, const ITavoValue& Value) {
  if (Value && Value->GetDType() == dtFunCall)
    CleanUpBinding(Value->GetAsFunCall());
  else if (Value && Value->HoldsBindingInfo())
    static_cast<TBindingInfo*>(Value->GetAsObject())->SetFactIndex(0);
  auto Share = [&](TReteNode* Candidate) -> TPatternMatchNode* {
    auto* Match = dynamic_cast<TPatternMatchNode*>(Candidate);
    return Match && Match->Equals(Test, Value, Args) ? Match : nullptr;
  };
  TPatternMatchNode* Shared = nullptr;
  if (Parent) {
    for (int I = 0; I < Parent->GetEdgeCount() && !Shared; ++I)
      Shared = Share(static_cast<TReteEdge*>(Parent->GetEdge(I))->ToNode());
  } else {
    for (size_t I = 0; I < FRoots.size() && !Shared; ++I) Shared = Share(FRoots[I]);
  }
  if (Shared) {
    Shared->SetRuleUseCount(Shared->GetRuleUseCount() + 1);
    RuleList(Rule).push_back(Shared);
    // A shared root leaves no mark.
    if (Parent) Rule->SetCompilation(Rule->GetCompilation() + u"=1");
    return Shared;
  }
  auto* Node = static_cast<TPatternMatchNode*>(MakeNode(FNodeMatchClass));
  Node->SetPatternMatchTest(Test);
  Node->SetArguments(Args);
  Node->SetValue(Value);
  AddNode(Node);
  if (Parent) static_cast<TReteEdge*>(Parent->AddEdge(Node))->SetCallType(ctSingle);
  RuleList(Rule).push_back(Node);
  Rule->SetCompilation(Rule->GetCompilation() + u"+1");
  return Node;
}

TPatternMatchNode* TReteNetwork::CreateSuccessor(TReteNode* Parent, TPatternMatchTest Test, TRule* Rule,
                                                 const TNodeArgsArray& Args) {
  const auto* Siblings = Parent ? nullptr : &FRoots;
  TPatternMatchNode* Shared = nullptr;
  auto Share = [&](TReteNode* Candidate) {
    auto* Match = dynamic_cast<TPatternMatchNode*>(Candidate);
    if (Match && !Match->GetValue() && Match->Equals(Test, Args)) Shared = Match;
  };
  if (Parent) {
    for (int I = 0; I < Parent->GetEdgeCount() && !Shared; ++I)
      Share(static_cast<TReteEdge*>(Parent->GetEdge(I))->ToNode());
  } else {
    for (size_t I = 0; I < Siblings->size() && !Shared; ++I) Share((*Siblings)[I]);
  }
  if (Shared) {
    Shared->SetRuleUseCount(Shared->GetRuleUseCount() + 1);
    RuleList(Rule).push_back(Shared);
    Rule->SetCompilation(Rule->GetCompilation() + u"=1");
    return Shared;
  }
  auto* Node = static_cast<TPatternMatchNode*>(MakeNode(FNodeMatchClass));
  Node->SetPatternMatchTest(Test);
  Node->SetArguments(Args);
  AddNode(Node);
  if (Parent) static_cast<TReteEdge*>(Parent->AddEdge(Node))->SetCallType(ctSingle);
  RuleList(Rule).push_back(Node);
  Rule->SetCompilation(Rule->GetCompilation() + u"+1");
  return Node;
}

void TReteNetwork::Evaluate(const IFunCall& FunCall, TRule* Rule, IFunCall& Result) {
  Result = FunCall->CloneCall();
  for (int I = 0; I < Result->GetArgumentCount(); ++I) {
    const ITavoValue& Argument = Result->GetArgument(I);
    if (!Argument) continue;
    if (IsVariable(Argument)) {
      String Name = Argument->GetAsString();
      if (TBinding* Binding = Rule->GetBindingByName(Name)) {
        ITavoValue Compiled = Make<TTavoValue>();
        Compiled->AdoptObject(new TBindingInfo(Binding->GetFactIndex(), Binding->GetSlotIndex(), Binding->GetSubIndex()));
        Result->SetArgument(I, Compiled);
      } else if (!FEngine || !FEngine->IsGlobalVariableName(Name)) {
        throw ETavoException(Format(SUnknownVariable, Name));
      }
    } else if (Argument->GetDType() == dtFunCall) {
      IFunCall Compiled;
      Evaluate(Argument->GetAsFunCall(), Rule, Compiled);
      Result->SetArgument(I, Make<TTavoValue>(Compiled));
    }
  }
}

bool TReteNetwork::HasMorePatterns(const IFunCall& FunCall, int PatternIndex) {
  for (int I = 0; I < FunCall->GetArgumentCount(); ++I) {
    const ITavoValue& Argument = FunCall->GetArgument(I);
    if (!Argument) continue;
    if (Argument->HoldsBindingInfo()) {
      if (static_cast<TBindingInfo*>(Argument->GetAsObject())->GetFactIndex() != PatternIndex) return true;
    } else if (Argument->GetDType() == dtFunCall && HasMorePatterns(Argument->GetAsFunCall(), PatternIndex)) {
      return true;
    }
  }
  return false;
}

void TReteNetwork::ProcessFirstPass(TRule* Rule, std::vector<TReteNode*>& Roots, std::vector<TReteNode*>& Lasts) {
  for (int I = 0; I < Rule->GetPatternCount(); ++I) {
    TTavoPattern* Pattern = Rule->GetPattern(I);
    bool IsTest = Pattern->GetName() == STestPatternName;
    TReteNode* Node = CreateSuccessor(nullptr, IsTest ? pmtUnknown : pmtTestClassType, Rule, {0, 0},
                                      Make<TTavoValue>(Pattern->GetName(), dtAtom));
    Roots.push_back(Node);
    if (!IsTest) {
      int Slots = Pattern->GetSlotCount();
      for (int S = 0; S < Slots; ++S)
        for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
          TTavoPatternMatchTest* Test = Pattern->GetSlotTest(S, T);
          if (Test->GetSlotValue() && Test->GetSlotValue()->GetDType() == dtMultiVariable)
            Node = CreateSuccessor(Node, pmtTestMultiSlotMultiField, Rule,
                                   {Pattern->GetSlotName(S), Test->GetMultiSlotSubIndex(), 0});
        }
      for (int S = 0; S < Slots; ++S)
        if (Pattern->GetSlotLength(S) > -1)
          Node = CreateSuccessor(Node, pmtTestMultiSlotLength, Rule,
                                 {Pattern->GetSlotName(S), Pattern->GetSlotLength(S), 0});
      int TokenIndex = TokenIndexOf(Rule, I);
      for (int S = 0; S < Slots; ++S)
        for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
          TTavoPatternMatchTest* Test = Pattern->GetSlotTest(S, T);
          const ITavoValue& Value = Test->GetSlotValue();
          if (!Value || IsVariable(Value)) continue;
          int SubIndex = Test->GetMultiSlotSubIndex();
          bool Negated = Test->GetSlotTestType() == sttNotEquals;
          TPatternMatchTest Kind = SubIndex != NoSubIndex ? (Negated ? pmtTestMultiSlotNotEqual : pmtTestMultiSlotEqual)
                                                          : (Negated ? pmtTestNotEqual : pmtTestEqual);
          TNodeArgsArray Args{Pattern->GetSlotName(S), SubIndex};
          if (Value->GetDType() == dtFunCall) {
            IFunCall Compiled;
            Evaluate(Value->GetAsFunCall(), Rule, Compiled);
            // A call on earlier patterns' variables is a join test.
            if (!HasMorePatterns(Compiled, TokenIndex))
              Node = CreateSuccessor(Node, Kind, Rule, Args, Make<TTavoValue>(Compiled));
          } else {
            Node = CreateSuccessor(Node, Kind, Rule, Args, Value);
          }
        }
    }
    Lasts.push_back(Node);
  }
}

void TReteNetwork::ProcessSecondPass(TRule* Rule, std::vector<TReteNode*>& Lasts) {
  std::vector<String> Seen;
  for (int I = 0; I < Rule->GetPatternCount(); ++I) {
    TTavoPattern* Pattern = Rule->GetPattern(I);
    if (Pattern->GetName() == STestPatternName) continue;
    Seen.clear();
    int Slots = Pattern->GetSlotCount();
    for (int S = 0; S < Slots; ++S)
      for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
        TTavoPatternMatchTest* Test = Pattern->GetSlotTest(S, T);
        const ITavoValue& Value = Test->GetSlotValue();
        if (!IsVariable(Value)) continue;
        String Name = Value->GetAsString();
        if (std::find(Seen.begin(), Seen.end(), Name) != Seen.end()) continue;
        bool Negated = Test->GetSlotTestType() == sttNotEquals;
        for (int S2 = S + 1; S2 < Slots; ++S2)
          for (int T2 = 0; T2 < Pattern->GetSlotTestCount(S2); ++T2) {
            TTavoPatternMatchTest* Other = Pattern->GetSlotTest(S2, T2);
            if (!Other->GetSlotValue() || !Other->GetSlotValue()->Equals(Value)) continue;
            bool OtherNegated = Other->GetSlotTestType() == sttNotEquals;
            if (Negated && OtherNegated) continue;
            Lasts[size_t(I)] = CreateSuccessor(
                Lasts[size_t(I)], Negated != OtherNegated ? pmtTestSlotValueNotEqual : pmtTestSlotValueEqual, Rule,
                {Pattern->GetSlotName(S), Pattern->GetSlotName(S2), Test->GetMultiSlotSubIndex(),
                 Other->GetMultiSlotSubIndex()});
          }
        Seen.push_back(std::move(Name));
      }
  }
}

void TReteNetwork::ProcessThirdPass(TRule* Rule, std::vector<TReteNode*>& Lasts) {
  int Tests = 0;
  std::vector<String> Names;
  std::vector<TReteNode*> NodeOf(size_t(Rule->GetPatternCount()), nullptr);
  std::vector<int> TokenIndexOf(size_t(Rule->GetPatternCount()), 0);
  for (int I = 1; I < Rule->GetPatternCount(); ++I) {
    TTavoPattern* Pattern = Rule->GetPattern(I);
    bool IsTest = Pattern->GetName() == STestPatternName;
    Names.clear();
    std::unique_ptr<TTestNode> Made;
    TJoinNode* Join = nullptr;
    if (IsTest) {
      Made.reset(static_cast<TTestNode*>(MakeNode(FNodeTestClass)));
      ++Tests;
    } else {
      Join = static_cast<TJoinNode*>(MakeNode(FNodeJoinClass));
      Made.reset(Join);
      Join->SetNegatedPattern(Pattern->GetNegatedCount() > 0);
      Join->SetUnique(Pattern->GetUnique());
      Join->SetHashKey(FHashKey);
    }
    int TokenIndex = I - Tests;
    bool BackChained = Pattern->GetFactTemplate() && Pattern->GetFactTemplate()->IsBackwardChaining();
    for (int S = 0; S < Pattern->GetSlotCount(); ++S)
      for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
        TTavoPatternMatchTest* Test = Pattern->GetSlotTest(S, T);
        const ITavoValue& Value = Test->GetSlotValue();
        if (IsVariable(Value)) {
          String Name = Value->GetAsString();
          if (std::find(Names.begin(), Names.end(), Name) != Names.end()) continue;
          TBinding* Binding = Rule->GetBindingByName(Name);
          if (!Binding) throw ETavoException(Format(SCorruptedVariable, Name));
          if (Binding->GetFactIndex() == TokenIndex) continue;
          // Only joins compare slots; a test element has none of its own.
          if (Join)
            Join->AddTest(Test->GetSlotTestType(), Binding->GetFactIndex(), Binding->GetSlotIndex(),
                          Binding->GetSubIndex(), Pattern->GetSlotName(S), Test->GetMultiSlotSubIndex());
          Names.push_back(std::move(Name));
        } else if (Value && Value->GetDType() == dtFunCall) {
          if (BackChained) throw ETavoException(Format(SBackChainFuncallPatterns, Pattern->GetName()));
          IFunCall Compiled;
          Evaluate(Value->GetAsFunCall(), Rule, Compiled);
          if (!IsTest && !HasMorePatterns(Compiled, TokenIndex)) continue;
          Made->AddTest(Test->GetSlotTestType(), Pattern->GetSlotName(S), Test->GetMultiSlotSubIndex(),
                        Make<TTavoValue>(Compiled));
        }
      }
    TReteNode* Left = Lasts[size_t(I - 1)];
    TReteNode* Right = Lasts[size_t(I)];
    TReteNode* Node = nullptr;
    if (!Pattern->IsNegated()) {
      for (int E = 0; E < Left->GetEdgeCount() && !Node; ++E) {
        auto* LeftEdge = static_cast<TReteEdge*>(Left->GetEdge(E));
        auto* Candidate = dynamic_cast<TJoinNode*>(LeftEdge->ToNode());
        if (!Candidate || Candidate->GetNegatedPattern() || LeftEdge->GetCallType() != ctLeft) continue;
        bool FedByRight = false;
        for (int R = 0; R < Right->GetEdgeCount() && !FedByRight; ++R) {
          auto* RightEdge = static_cast<TReteEdge*>(Right->GetEdge(R));
          FedByRight = RightEdge->ToNode() == Candidate && RightEdge->GetCallType() == ctRight;
        }
        if (FedByRight && Candidate->Equals(Made.get())) Node = Candidate;
      }
    }
    if (Node) {
      Node->SetRuleUseCount(Node->GetRuleUseCount() + 1);
      RuleList(Rule).push_back(Node);
      Rule->SetCompilation(Rule->GetCompilation() + u"=2");
    } else {
      Node = Made.release();
      AddNode(Node);
      static_cast<TReteEdge*>(Left->AddEdge(Node))->SetCallType(ctLeft);
      static_cast<TReteEdge*>(Right->AddEdge(Node))->SetCallType(ctRight);
      if (Join) {
        if (BackChained && !Pattern->GetExplicit()) {
          Join->SetPattern(Pattern);
          Join->SetRule(Rule);
        }
        Join->PrepareShortCut();
      }
      RuleList(Rule).push_back(Node);
      Rule->SetCompilation(Rule->GetCompilation() + u"+2");
      // Each further negation is a bare negated join on the one before:
      // (exists p) passes a left token while the first join gives nothing.
      for (int K = 1; K < Pattern->GetNegatedCount(); ++K) {
        auto* Bare = static_cast<TJoinNode*>(MakeNode(FNodeJoinClass));
        Bare->SetNegatedPattern(true);
        Bare->SetHashKey(FHashKey);
        AddNode(Bare);
        static_cast<TReteEdge*>(Node->AddEdge(Bare))->SetCallType(ctRight);
        static_cast<TReteEdge*>(Left->AddEdge(Bare))->SetCallType(ctLeft);
        RuleList(Rule).push_back(Bare);
        Node = Bare;
      }
    }
    Lasts[size_t(I - 1)] = Node;
    Lasts[size_t(I)] = Node;
    NodeOf[size_t(I)] = Node;
    TokenIndexOf[size_t(I)] = TokenIndex;
    if (IsTest) GuardNegations(Rule, I, static_cast<TTestNode*>(Node), NodeOf, TokenIndexOf);
  }
}

void TReteNetwork::GuardNegations(TRule* Rule, int Index, TTestNode* Test, const std::vector<TReteNode*>& NodeOf,
                                  const std::vector<int>& TokenIndexOf) {
  int Deepest = -1;
  for (int T = 0; T < Test->GetTestCount(); ++T) {
    auto* Each = dynamic_cast<TTavoPatternMatchTest*>(Test->GetTest(T));
    if (!Each || !Each->GetSlotValue() || Each->GetSlotValue()->GetDType() != dtFunCall ||
        !ReadsOnlyFacts(Each->GetSlotValue()->GetAsFunCall(), Deepest))
      return;
  }
  // Back over plain negations whose tokens already hold every fact the
  // tests read. A negation passes or withholds each left token by itself
  // alone, so dropping early a token the test refuses anyway changes
  // nothing that comes out. An exists is passed over: the output of its
  // first join blocks every token at its second, so its tokens do not
  // stand alone.
  TJoinNode* Guarded = nullptr;
  for (int K = Index - 1; K >= 1; --K) {
    TTavoPattern* Pattern = Rule->GetPattern(K);
    auto* Join = dynamic_cast<TJoinNode*>(NodeOf[size_t(K)]);
    if (Pattern->GetName() == STestPatternName || Pattern->GetNegatedCount() != 1 || !Join ||
        !Join->GetNegatedPattern() || Join->GetPattern() || Deepest >= TokenIndexOf[size_t(K)])
      break;
    Guarded = Join;
  }
  if (!Guarded) return;
  for (int T = 0; T < Test->GetTestCount(); ++T) {
    auto* Each = static_cast<TTavoPatternMatchTest*>(Test->GetTest(T));
    Guarded->AddGuard(Each->GetSlotValue(), Each->GetSlotTestType() == sttNotEquals);
  }
}

void TReteNetwork::ProcessFourthPass(TRule* Rule, std::vector<TReteNode*>& Roots, std::vector<TReteNode*>& Lasts) {
  int Count = Rule->GetPatternCount();
  if (Count < 1) return;
  auto* Terminal = static_cast<TPatternMatchTerminalNode*>(MakeNode(FNodeTerminalClass));
  Terminal->SetRule(Rule);
  AddNode(Terminal);
  Rule->SetCompilation(Rule->GetCompilation() + u"+t");
  static_cast<TReteEdge*>(Lasts[size_t(Count - 1)]->AddEdge(Terminal))->SetCallType(ctActivate);
  RuleList(Rule).push_back(Terminal);
  UpdateNodes(Roots);
  Terminal->SetInitialized(true);
}

bool TReteNetwork::ProcessTokenOneNode(const IReteToken& Token, TReteNode* Node) {
  return Node->CallNode(Token, ctSingle);
}

void TReteNetwork::UpdateNodes(const std::vector<TReteNode*>& Nodes) {
  if (!FEngine) return;
  // Facts come round again: a walk under way meets tokens held already.
  TFreshWalk::Forget();
  for (const IFact& Fact : FEngine->GetNetworkFacts(this)) {
    IReteToken Remove = Make<TTavoToken>(taRemove, Fact);
    for (TReteNode* Node : Nodes) ProcessTokenOneNode(Remove, Node);
    IReteToken Add = Make<TTavoToken>(taAdd, Fact);
    for (TReteNode* Node : Nodes) ProcessTokenOneNode(Add, Node);
  }
}

void TReteNetwork::AddRule(TRule* Rule) {
  if (!FEnabled) return;
  if (Rule->GetPatternCount() == 0 && FEngine && FEngine->GetInitialFactPattern()) {
    Rule->GetPatterns().Add(FEngine->GetInitialFactPattern()->Clone(Rule));
    if (HoldsRule(Rule)) return;
  }
  Rule->SetCompilation(Rule->GetRuleName() + u": ");
  FRuleNodes[Rule].clear();
  Rule->FreeNotification(this);
  std::vector<TReteNode*> Roots, Lasts;
  ProcessFirstPass(Rule, Roots, Lasts);
  ProcessSecondPass(Rule, Lasts);
  ProcessThirdPass(Rule, Lasts);
  ProcessFourthPass(Rule, Roots, Lasts);
}

void TReteNetwork::RemoveRule(TRule* Rule) {
  auto Found = FRuleNodes.find(Rule);
  if (Found == FRuleNodes.end()) return;
  // Taken out of the table first: freeing a node must not walk this list.
  std::vector<TReteNode*> Nodes = std::move(Found->second);
  FRuleNodes.erase(Found);
  Rule->RemoveFreeNotification(this);
  for (size_t I = Nodes.size(); I-- > 0;) {
    TReteNode* Node = Nodes[I];
    Node->SetRuleUseCount(Node->GetRuleUseCount() - 1);
    if (Node->GetRuleUseCount() == 0) RemoveNode(Node);
  }
}

// Tokens

const std::vector<TReteNode*>& TReteNetwork::RootsFor(TFactTemplate* Template) {
  TDispatch& Entry = FDispatch[Template];
  // The entry holds while the template's chain of names is the one it was
  // worked out for.
  bool Valid = Entry.Template.Get() == Template;
  if (Valid) {
    size_t Level = 0;
    for (TFactTemplate* T = Template; T && Valid; T = T->GetParent().Get(), ++Level)
      Valid = Level < Entry.Chain.size() && Entry.Chain[Level].first == T && Entry.Chain[Level].second == T->GetTemplateName();
    Valid = Valid && Level == Entry.Chain.size();
  }
  if (Valid) return Entry.Roots;
  Entry.Template = IFactTemplate(Template);
  Entry.Chain.clear();
  for (TFactTemplate* T = Template; T; T = T->GetParent().Get()) Entry.Chain.emplace_back(T, T->GetTemplateName());
  Entry.Roots.clear();
  for (TReteNode* Root : FRoots) {
    auto* Match = dynamic_cast<TPatternMatchNode*>(Root);
    if (Match && Match->GetPatternMatchTest() == pmtUnknown) continue;
    if (Match && Match->GetPatternMatchTest() == pmtTestClassType) {
      bool Passes = false;
      for (auto& Level : Entry.Chain) Passes = Passes || Level.second == Match->GetClassName();
      if (!Passes) continue;
    }
    Entry.Roots.push_back(Root);
  }
  return Entry.Roots;
}

bool TReteNetwork::ProcessToken(const IReteToken& Token) {
  TTokenAction Tag = Token->GetTag();
  if (!FEnabled && (Tag == taAdd || Tag == taUpdate)) return false;
  TFreshWalk Walk(Tag == taAdd ? Token->GetFact().Get() : nullptr);
  Token->SetFresh();
  bool Result = false;
  TFactTemplate* Template = Tag == taClear || !Token->GetFact() ? nullptr : Token->GetFact()->GetTemplate().Get();
  if (!Template) {
    for (size_t I = 0; I < FRoots.size(); ++I) Result = ProcessTokenOneNode(Token, FRoots[I]) || Result;
    return Result;
  }
  const std::vector<TReteNode*>& Roots = RootsFor(Template);
  // By index: a rule added while the token travels changes the roots.
  for (size_t I = 0; I < Roots.size(); ++I) Result = ProcessTokenOneNode(Token, Roots[I]) || Result;
  return Result;
}

String TReteNetwork::ToString() const {
  String Result;
  for (int I = 0; I < GetNodeCount(); ++I) Result += GetNode(I)->ToString() + u"\r\n";
  return Result;
}

}  // namespace tavo
