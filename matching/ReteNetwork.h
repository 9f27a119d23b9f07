// The Rete network of one module: compiles rules into shared nodes, feeds
// fact tokens in at the roots and hands activations to the engine.
#pragma once

#include <unordered_map>
#include <vector>

#include "matching/ActivationAgenda.h"
#include "matching/ReteNodes.h"

namespace tavo {

class TReteNetwork;

// What the network needs of its engine; the engine implements it.
class IReteEngine {
 public:
  // The activation is the engine's from here on.
  virtual void AddActivation(TActivation* Activation) = 0;
  // The engine takes the activation off its agenda and hands it back: TRUE
  // when the caller frees it, FALSE when the firing code still holds it.
  virtual bool RemoveActivation(TActivation* Activation) = 0;
  // A fired activation has left its node.
  virtual void RuleFired(TActivation* Activation) = 0;
  virtual TTavoContext* GetContext() const = 0;
  virtual const IFact& GetNullFact() const = 0;
  // The pattern a rule without patterns, or one opening with a negation
  // or a test, matches first; null when there is none.
  virtual TTavoPattern* GetInitialFactPattern() const = 0;
  // The facts of the network's module, in order: a rule added later meets
  // them.
  virtual std::vector<IFact> GetNetworkFacts(const TReteNetwork* Network) const = 0;
  // Whether a name not bound by a rule is a global variable.
  virtual bool IsGlobalVariableName(StringView Name) const = 0;
  // How activations of equal salience are ordered on the agendas.
  virtual TSearchStrategy GetStrategy() const = 0;
  // The template of that name in the current module, made as an implied
  // template when there is none.
  virtual IFactTemplate CreateFactTemplate(const String& Name) = 0;
  // Queues a fact to assert (or retract) once the walk under way has ended:
  // a fact never enters the network in the middle of a token's walk.
  virtual void AddPendingFact(const IFact& Fact, bool Assert) = 0;

 protected:
  ~IReteEngine() = default;
};


class TReteNetwork : public TGGraph {
  TAVO_CLASS(TReteNetwork, TGGraph)
 public:
  explicit TReteNetwork(TComponent* Owner = nullptr);
  ~TReteNetwork() override;

  // The engine is found among the owners; a host may set one of its own.
  IReteEngine* GetEngine() const { return FEngine; }
  void SetEngine(IReteEngine* Engine) { FEngine = Engine; }
  // The module that owns the network.
  TModule* GetModule() const { return FModule; }
  void SetModule(TModule* Value) { FModule = Value; }

  int GetHashKey() const { return FHashKey; }
  void SetHashKey(int Value) { FHashKey = Value < 1 ? 1 : Value; }
  float GetMinActivationStrength() const { return FMinActivationStrength; }
  void SetMinActivationStrength(float Value);
  bool GetEnabled() const { return FEnabled; }
  // Turning the network off clears it; the engine adds rules again when it
  // is turned on.
  void SetEnabled(bool Value);

  const TClass* GetNodeJoinClass() const { return FNodeJoinClass; }
  void SetNodeJoinClass(const TClass* Value) { FNodeJoinClass = Value; }
  const TClass* GetNodeMatchClass() const { return FNodeMatchClass; }
  void SetNodeMatchClass(const TClass* Value) { FNodeMatchClass = Value; }
  const TClass* GetNodeTerminalClass() const { return FNodeTerminalClass; }
  void SetNodeTerminalClass(const TClass* Value) { FNodeTerminalClass = Value; }
  const TClass* GetNodeTestClass() const { return FNodeTestClass; }
  void SetNodeTestClass(const TClass* Value) { FNodeTestClass = Value; }

  int GetRootCount() const { return int(FRoots.size()); }
  TReteNode* GetRoot(int Index) const { return FRoots[size_t(Index)]; }
  // The nodes a rule holds, one entry per use; null for a rule not here.
  const std::vector<TReteNode*>* GetRuleNodes(const TRule* Rule) const;
  bool HoldsRule(const TRule* Rule) const { return GetRuleNodes(Rule) != nullptr; }

  virtual void Activate(TActivation* Activation);
  virtual void Deactivate(TActivation* Activation);
  virtual void RuleFired(TActivation* Activation);
  // An alpha node under Parent (a root when Parent is null), shared when
  // an equal one is there.
  virtual TPatternMatchNode* CreateSuccessor(TReteNode* Parent, TPatternMatchTest Test, TRule* Rule,
                                             const TNodeArgsArray& Args, const ITavoValue& Value);
  virtual TPatternMatchNode* CreateSuccessor(TReteNode* Parent, TPatternMatchTest Test, TRule* Rule,
                                             const TNodeArgsArray& Args);
  // A clone of the call whose variables are the rule's binding coordinates.
  virtual void Evaluate(const IFunCall& FunCall, TRule* Rule, IFunCall& Result);
  virtual void ProcessFirstPass(TRule* Rule, std::vector<TReteNode*>& Roots, std::vector<TReteNode*>& Lasts);
  virtual void ProcessSecondPass(TRule* Rule, std::vector<TReteNode*>& Lasts);
  virtual void ProcessThirdPass(TRule* Rule, std::vector<TReteNode*>& Lasts);
  virtual void ProcessFourthPass(TRule* Rule, std::vector<TReteNode*>& Roots, std::vector<TReteNode*>& Lasts);
  virtual bool ProcessTokenOneNode(const IReteToken& Token, TReteNode* Node);
  // Each fact of the engine goes to the nodes as a removal and then as an
  // addition, so that a new rule meets the facts there are.
  virtual void UpdateNodes(const std::vector<TReteNode*>& Nodes);
  virtual void AddRule(TRule* Rule);
  virtual void RemoveRule(TRule* Rule);
  // Gives the token to every root that can pass it, in root order.
  virtual bool ProcessToken(const IReteToken& Token);
  // TRUE when a call reads a fact other than that of Pattern.
  static bool HasMorePatterns(const IFunCall& FunCall, int PatternIndex);

  void Clear() override;
  void AddNode(TGGraphNode* Node) override;
  void RemoveNode(TGGraphNode* Node) override;
  void Extract(TGGraphNode* Node) override;
  void Notification(TComponent* Component, TOperation Operation) override;

  // How strongly a fuzzy value matches another value, 0 to 1.
  float FuzzyMatch(const ITavoValue& Fuzzy, const ITavoValue& Other) const;
  const IFact& GetNullFact() const;

  // Each node's text, one a line, in the order the nodes were made.
  String ToString() const override;

  TActivationEvent OnActivation;
  TActivationEvent OnDeactivation;
  TActivationEvent OnRuleFired;

  // Kept in step by the nodes.
  void AddRoot(TReteNode* Node);
  void RemoveRoot(TReteNode* Node);
  void NodeGoing(TReteNode* Node);
  // An activation that no engine took.
  static void FreeActivation(TActivation* Activation);

 private:
  // A node of Class, in this network, with its context.
  TReteNode* MakeNode(const TClass* Class);
  std::vector<TReteNode*>& RuleList(TRule* Rule);
  // Lets the negations just before the test element at Index check its
  // tests on arrival (see TJoinNode::AddGuard); NodeOf and TokenIndexOf
  // give each earlier pattern's last node and position in the token.
  void GuardNegations(TRule* Rule, int Index, TTestNode* Test, const std::vector<TReteNode*>& NodeOf,
                      const std::vector<int>& TokenIndexOf);
  void ForgetNodeInRuleLists(TReteNode* Node);
  // The roots a fact of Template can pass, in root order.
  const std::vector<TReteNode*>& RootsFor(TFactTemplate* Template);

  std::vector<TReteNode*> FRoots;
  std::unordered_map<const TRule*, std::vector<TReteNode*>> FRuleNodes;
  int FHashKey = 101;
  float FMinActivationStrength = 0;
  const TClass* FNodeJoinClass;
  const TClass* FNodeMatchClass;
  const TClass* FNodeTerminalClass;
  const TClass* FNodeTestClass;
  bool FEnabled = true;
  TModule* FModule = nullptr;
  IReteEngine* FEngine = nullptr;
  bool FClearing = false;

  // Roots by template: each entry remembers the template chain it was
  // worked out for, and all are dropped when the roots change.
  struct TDispatch {
    IFactTemplate Template;
    std::vector<std::pair<const TFactTemplate*, String>> Chain;
    std::vector<TReteNode*> Roots;
  };
  std::unordered_map<const TFactTemplate*, TDispatch> FDispatch;
};

}  // namespace tavo
