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
  if (TPatternMatchTerminalNode* Node = std::exchange(FNode, nullptr)) Node->Deactivate(this);
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

int TActivationAgenda::FindInsertion(TActivation* /*Activation*/) { return -1; }

int TActivationAgenda::Add(TActivation* Activation) {
  int Index = FindInsertion(Activation);
  if (Index < 0 || Index > Count()) {
    FItems.push_back(Activation);
    return Count() - 1;
  }
  FItems.insert(FItems.begin() + Index, Activation);
  return Index;
}

int TActivationAgenda::IndexOfData(const TActivation* Activation) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I] == Activation) return int(I);
  return -1;
}

TActivation* TActivationAgenda::Extract(int Index) {
  TActivation* Activation = FItems[size_t(Index)];
  FItems.erase(FItems.begin() + Index);
  return Activation;
}

void TActivationAgenda::Delete(int Index) {
  TActivation* Activation = Extract(Index);
  if (FFreeData) delete Activation;
}

void TActivationAgenda::Clear() {
  std::vector<TActivation*> Items;
  Items.swap(FItems);
  if (FFreeData)
    for (TActivation* Activation : Items) delete Activation;
}

String TActivationAgenda::ToString() const {
  String Result;
  for (TActivation* Activation : FItems) Result += Activation->ToString() + u"\r\n";
  return Result;
}

}  // namespace tavo
