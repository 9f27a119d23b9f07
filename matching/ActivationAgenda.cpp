#include "matching/ActivationAgenda.h"

#include "knowledge/TavoRule.h"
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

TActivationAgenda::TItems::const_iterator TActivationAgenda::At(int Index) const {
  if (Index <= Count() / 2) return std::next(FItems.begin(), Index);
  return std::prev(FItems.end(), Count() - Index);
}

TActivation* TActivationAgenda::GetActivations(int Index) const { return *At(Index); }

int TActivationAgenda::FindInsertion(TActivation* /*Activation*/) { return -1; }

int TActivationAgenda::Add(TActivation* Activation) {
  int Index = FindInsertion(Activation);
  if (Index < 0 || Index >= Count()) {
    FWhere[Activation] = FItems.insert(FItems.end(), Activation);
    return Count() - 1;
  }
  FWhere[Activation] = FItems.insert(At(Index), Activation);
  return Index;
}

int TActivationAgenda::IndexOfData(const TActivation* Activation) const {
  if (!Contains(Activation)) return -1;
  int Index = 0;
  for (TActivation* Item : FItems) {
    if (Item == Activation) return Index;
    ++Index;
  }
  return -1;
}

TActivation* TActivationAgenda::Extract(int Index) {
  auto Item = At(Index);
  TActivation* Activation = *Item;
  FWhere.erase(Activation);
  FItems.erase(Item);
  return Activation;
}

bool TActivationAgenda::ExtractData(TActivation* Activation) {
  auto Found = FWhere.find(Activation);
  if (Found == FWhere.end()) return false;
  FItems.erase(Found->second);
  FWhere.erase(Found);
  return true;
}

void TActivationAgenda::Delete(int Index) {
  TActivation* Activation = Extract(Index);
  if (FFreeData) delete Activation;
}

void TActivationAgenda::Clear() {
  TItems Items;
  Items.swap(FItems);
  FWhere.clear();
  if (FFreeData)
    for (TActivation* Activation : Items) delete Activation;
}

String TActivationAgenda::ToString() const {
  String Result;
  for (TActivation* Activation : FItems) Result += Activation->ToString() + u"\r\n";
  return Result;
}

}  // namespace tavo
