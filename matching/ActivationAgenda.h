// Activations: one complete match of a rule each, made by the terminal
// node that holds it and placed by the engine.
#pragma once

#include "common/MekGenerics.h"
#include "core/TavoConsts.h"
#include "core/TavoInterfaces.h"
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
  // copied (Assign copies it). The clone is not in the node's list.
  virtual TActivation* Clone() const;
  // A clone for re-sorting an agenda, which takes this activation's place
  // in its terminal node, so that a later retraction withdraws the clone;
  // this one leaves the node unannounced and is the caller's to free. An
  // activation in no node's list is its own clone, at strength 1.0.
  TActivation* CloneIntoNode();
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
  // The next activation of the node whose token has the same hash of facts.
  TActivation* FNodeSame = nullptr;
  uint64_t FNodeSequence = 0;
  bool FInNode = false;
  // The agenda entry that holds the activation, if any.
  friend class TActivationAgenda;
  void* FAgendaEntry = nullptr;
};

using TActivationEvent = std::function<void(TObject* Sender, TActivation* Activation)>;

// The activations of one module in agenda order. The agenda owns them: an
// entry deleted frees its activation while FreeData holds. An activation
// copied into a second agenda (for re-sorting) is found by reference only
// in the agenda that held it first; by index it is found in both. Entries sit in a
// tree ordered by position that knows the size of each subtree, so that an
// index, an insertion at an index and the withdrawal of an activation each
// cost a logarithm of the agenda's length. An entry keeps the salience its
// rule had when it was placed; its text is made only when asked for.
class TActivationAgenda : public TPersistent {
  TAVO_CLASS(TActivationAgenda, TPersistent)
 public:
  TActivationAgenda() = default;
  ~TActivationAgenda() override { Clear(); }

  int Count() const { return Size(FRoot); }
  TActivation* GetActivations(int Index) const;
  bool GetFreeData() const { return FFreeData; }
  void SetFreeData(bool Value) { FFreeData = Value; }

  // Where an activation goes; -1 appends. The base keeps arrival order.
  virtual int FindInsertion(TActivation* Activation);
  // Places the activation and gives its index.
  int Add(TActivation* Activation);
  // The index of that very activation, or -1.
  int IndexOfData(const TActivation* Activation) const;
  bool Contains(const TActivation* Activation) const;
  // Takes the entry out and hands its activation, alive, to the caller.
  TActivation* Extract(int Index);
  // The same by the activation; FALSE when the agenda does not hold it.
  bool ExtractData(TActivation* Activation);
  // Takes the entry out first, then frees the activation while FreeData
  // holds: a freed activation reaches back through the network and must
  // find its entry gone.
  void Delete(int Index);
  void Clear();
  // The entry's text: the salience at its placing, the rule's name, the
  // token's facts and the strength.
  String GetString(int Index) const;
  // The salience the entry was placed with.
  int GetSalience(int Index) const;
  // Each entry's text, one a line.
  String ToString() const override;

  struct TNode;
  // The activations in agenda order.
  class TIterator {
   public:
    explicit TIterator(const TNode* Node) : FNode(Node) {}
    TActivation* operator*() const;
    TIterator& operator++();
    bool operator!=(const TIterator& Other) const { return FNode != Other.FNode; }

   private:
    const TNode* FNode;
  };
  TIterator begin() const;
  TIterator end() const { return TIterator(nullptr); }

 private:
  static int Size(const TNode* Node);
  static void Update(TNode* Node);
  static void Split(TNode* Tree, int Count, TNode*& Left, TNode*& Right);
  static TNode* Merge(TNode* Left, TNode* Right);
  const TNode* At(int Index) const;
  static int RankOf(const TNode* Node);
  TNode* NodeOf(const TActivation* Activation) const;
  void Unlink(TNode* Node);

  TNode* FRoot = nullptr;
  uint32_t FSeed = 2463534242u;
  bool FFreeData = true;
};

// Where an activation of that salience goes in Agenda under Strategy, or
// -1 for the end: the list runs by descending salience, and a binary search
// that stops at the first equal entry it probes places a new one among its
// equals. Saliences are read from the rules as they stand now.
int SearchSalience(const TActivationAgenda& Agenda, int Salience, TSearchStrategy Strategy);

class IReteEngine;

// The agenda of a module: an activation goes where the engine's strategy
// places it among the saliences. Without an engine it keeps arrival order.
class TTavoAgenda : public TActivationAgenda {
  TAVO_CLASS(TTavoAgenda, TActivationAgenda)
 public:
  TTavoAgenda(TModule* Module = nullptr, IReteEngine* Engine = nullptr) : FModule(Module), FEngine(Engine) {}
  TModule* GetModule() const { return FModule; }
  IReteEngine* GetEngine() const { return FEngine; }
  int FindInsertion(TActivation* Activation) override;

 private:
  TModule* FModule;
  IReteEngine* FEngine;
};

}  // namespace tavo
