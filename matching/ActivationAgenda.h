// Activations: one complete match of a rule each, made by the terminal
// node that holds it and placed by the engine.
#pragma once

#include <list>
#include <unordered_map>

#include "common/MekGenerics.h"
#include "matching/TavoToken.h"

namespace tavo {

class TRule;
class TPatternMatchTerminalNode;

class TActivation : public TPersistent {
  TAVO_CLASS(TActivation, TPersistent)
 public:
  TActivation(TRule* Rule, IReteToken Token, TPatternMatchTerminalNode* Node, float Strength = 1.0f);
  // Leaves the terminal node's list first, so that a freed activation is
  // withdrawn from the network's view too.
  ~TActivation() override;

  TRule* GetRule() const { return FRule; }
  const IReteToken& GetToken() const { return FToken; }
  TPatternMatchTerminalNode* GetNode() const { return FNode; }
  void SetNode(TPatternMatchTerminalNode* Value) { FNode = Value; }
  // Set while the activation is being freed, so that the withdrawal it
  // sets off does not free it again.
  bool IsDestroying() const { return FDestroying; }
  float GetStrength() const { return FStrength; }
  // Held between 0 and 1.
  void SetStrength(float Value);

  // The same rule, token and node, at strength 1.0: the strength is not
  // copied (Assign copies it).
  virtual TActivation* Clone() const;
  void Assign(const TPersistent* Source) override;
  // The rule's actions on the token, then the node is told.
  virtual bool Fire();
  String ToString() const override;

 private:
  TRule* FRule;
  IReteToken FToken;
  TPatternMatchTerminalNode* FNode;
  float FStrength;
  bool FDestroying = false;
  // The terminal node's list: its neighbours there, and the order of
  // arrival among activations of equal sort codes.
  friend class TPatternMatchTerminalNode;
  TActivation* FNodePrev = nullptr;
  TActivation* FNodeNext = nullptr;
  uint64_t FNodeSequence = 0;
  bool FInNode = false;
};

using TActivationEvent = std::function<void(TObject* Sender, TActivation* Activation)>;

// The activations of one module in agenda order. The agenda owns them: an
// entry deleted frees its activation while FreeData holds. An activation is
// found in one step, so that withdrawing one costs nothing per entry; texts
// are made only when asked for.
class TActivationAgenda : public TPersistent {
  TAVO_CLASS(TActivationAgenda, TPersistent)
 public:
  TActivationAgenda() = default;
  ~TActivationAgenda() override { Clear(); }

  int Count() const { return int(FItems.size()); }
  // By a walk from the nearer end; index 0 is one step.
  TActivation* GetActivations(int Index) const;
  bool GetFreeData() const { return FFreeData; }
  void SetFreeData(bool Value) { FFreeData = Value; }

  // Where an activation goes; -1 appends. The base keeps arrival order.
  virtual int FindInsertion(TActivation* Activation);
  // Places the activation and gives its index.
  int Add(TActivation* Activation);
  // The index of that very activation, or -1.
  int IndexOfData(const TActivation* Activation) const;
  bool Contains(const TActivation* Activation) const { return FWhere.count(Activation) > 0; }
  // Takes the entry out and hands its activation, alive, to the caller.
  TActivation* Extract(int Index);
  // The same by the activation; FALSE when the agenda does not hold it.
  bool ExtractData(TActivation* Activation);
  // Takes the entry out first, then frees the activation while FreeData
  // holds: a freed activation reaches back through the network and must
  // find its entry gone.
  void Delete(int Index);
  void Clear();
  // Each activation's text, one a line.
  String ToString() const override;
  // The activations in agenda order.
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

 private:
  using TItems = std::list<TActivation*>;
  TItems::const_iterator At(int Index) const;

  TItems FItems;
  std::unordered_map<const TActivation*, TItems::iterator> FWhere;
  bool FFreeData = true;
};

}  // namespace tavo
