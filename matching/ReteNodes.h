// The nodes of the Rete network: alpha tests on one fact, test nodes, joins
// with their two memories, and the terminal nodes that make activations.
// Every token of the matcher passes through CallNode of these classes, so
// this unit is where the speed of matching is decided.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "common/MekGraph.h"
#include "common/MekHashTables.h"
#include "core/TavoContext.h"
#include "knowledge/TavoFacts.h"
#include "knowledge/TavoPattern.h"
#include "matching/TavoSlotTest.h"
#include "matching/TavoToken.h"

namespace tavo {

class TReteNetwork;
class TActivation;
class TRule;

// Which input of its target an edge feeds.
enum TCallType { ctLeft, ctRight, ctSingle, ctActivate };
String GetCallTypeName(TCallType Type);

// The test of an alpha node.
enum TPatternMatchTest {
  pmtUnknown,
  pmtTestClassType,
  pmtTestEqual,
  pmtTestNotEqual,
  pmtTestSlotValueEqual,
  pmtTestSlotValueNotEqual,
  pmtTestMultiSlotEqual,
  pmtTestMultiSlotNotEqual,
  pmtTestMultiSlotLength,
  pmtTestMultiSlotMultiField,
  pmtFailTest
};
String GetPatternMatchTestName(TPatternMatchTest Test);

// One argument of an alpha node: a slot name or a number. Slot names carry
// the position they had in the last layout seen, so that a fact's slot is
// read by position after the first fact of a template.
class TNodeArg {
 public:
  TNodeArg() = default;
  TNodeArg(int Number) : FNumber(Number) {}
  TNodeArg(String Name) : FIsName(true), FName(std::move(Name)) {}

  bool IsName() const { return FIsName; }
  const String& GetName() const { return FName; }
  int GetNumber() const { return FNumber; }
  // The value of the named slot in Fact, or null when the fact has no such
  // slot.
  const ITavoValue* Find(TFact& Fact) const;
  bool SameValue(const TNodeArg& Other) const {
    return FIsName == Other.FIsName && FNumber == Other.FNumber && FName == Other.FName;
  }
  String ToString() const;

 private:
  bool FIsName = false;
  int FNumber = 0;
  String FName;
  mutable const void* FLayoutSeen = nullptr;
  mutable int FPosition = -1;
};
using TNodeArgsArray = std::vector<TNodeArg>;

class TReteEdge : public TGGraphEdge {
  TAVO_CLASS(TReteEdge, TGGraphEdge)
 public:
  TReteEdge(TGGraphNode* From, TGGraphNode* To) : TGGraphEdge(From, To) {}
  TCallType GetCallType() const { return FCallType; }
  void SetCallType(TCallType Value) { FCallType = Value; }
  class TReteNode* FromNode() const;
  class TReteNode* ToNode() const;
  int ReadData() const override { return int(FCallType); }
  void WriteData(int Value) override { FCallType = TCallType(Value); }

 private:
  TCallType FCallType = ctSingle;
};

class TReteNode : public TGLinkedGraphNode {
  TAVO_CLASS(TReteNode, TGLinkedGraphNode)
 public:
  TReteNode();
  ~TReteNode() override;

  TReteNetwork* Rete() const;
  int GetRuleUseCount() const { return FRuleUseCount; }
  void SetRuleUseCount(int Value) { FRuleUseCount = Value < 0 ? 0 : Value; }
  TTavoContext* GetContext() const { return FContext.get(); }
  // The node's scope of evaluation, a child of the engine's global context
  // (of a scope of its own without one).
  void MakeContext(TTavoContext* Global);

  // Substitutes values of a token into a call; nothing in the engine calls
  // it, and the base gives the call unchanged.
  virtual void Evaluate(const IFunCall& FunCall, const IReteToken& Token, const IFact& Fact, ITavoValue& Result);
  // A token arriving on one input. Gives whether the node passed it on.
  virtual bool CallNode(const IReteToken& Token, TCallType CallType) = 0;

  TGGraphEdge* NewEdge(TGGraphNode* From, TGGraphNode* To) override;
  void AddingEdgeFrom(TGGraphEdge* Edge) override;
  void RemovingEdgeFrom(TGGraphEdge* Edge) override;
  String ToString() const override;

 protected:
  // Each outgoing edge in creation order, each edge's subtree to its end
  // before the next.
  void CallChildren(const IReteToken& Token);

 private:
  int FRuleUseCount = 1;
  std::unique_ptr<TTavoContext> FContext;
};

class TPatternMatchNode : public TReteNode {
  TAVO_CLASS(TPatternMatchNode, TReteNode)
 public:
  TPatternMatchNode() = default;

  const ITavoValue& GetValue() const { return FValue; }
  void SetValue(const ITavoValue& Value);
  const TNodeArgsArray& GetArguments() const { return FArguments; }
  void SetArguments(TNodeArgsArray Value) { FArguments = std::move(Value); }
  TPatternMatchTest GetPatternMatchTest() const { return FPatternMatchTest; }
  const String& GetClassName() const { return FClassName; }
  virtual void SetPatternMatchTest(TPatternMatchTest Value) { FPatternMatchTest = Value; }

  bool CallNode(const IReteToken& Token, TCallType CallType) override;
  // Passes the token on when SlotValue equals Value (or does not, with
  // Negate), weighing a fuzzy match by its strength.
  virtual bool CallChildren(const IReteToken& Token, const ITavoValue& Value, bool Negate,
                            const ITavoValue& SlotValue);
  virtual bool Equals(TPatternMatchTest Test, const ITavoValue& Value, const TNodeArgsArray& Args) const;
  bool Equals(TPatternMatchTest Test, const TNodeArgsArray& Args) const;
  String ToString() const override;

 private:
  using TReteNode::CallChildren;
  // The compiled call run with the fact in the node's context; TRUE when it
  // gives anything but FALSE.
  bool CallPasses(const IReteToken& Token);
  bool ClassTypePasses(const TFact& Fact) const;
  void CallMultiField(const IReteToken& Token, TFact& Fact);

  ITavoValue FValue;
  TNodeArgsArray FArguments;
  TPatternMatchTest FPatternMatchTest = pmtUnknown;
  // The name a class test looks for.
  String FClassName;
};

class TTestNode : public TReteNode {
  TAVO_CLASS(TTestNode, TReteNode)
 public:
  TTestNode() = default;
  ~TTestNode() override;

  // A test on the function-call value, or a join test between a slot of
  // the right fact and one of a left fact.
  void AddTest(TSlotTestType Type, const String& SlotName, int SubIndex, const ITavoValue& Value);
  void AddTest(TSlotTestType Type, const String& SlotName, const ITavoValue& Value) {
    AddTest(Type, SlotName, NoSubIndex, Value);
  }
  void ClearTests();
  void DeleteTest(int Index);
  int GetTestCount() const { return int(FTests.size()); }
  TTavoSlotTest* GetTest(int Index) const { return FTests[size_t(Index)].get(); }
  virtual bool Equals(const TTestNode* Node) const;

  bool CallNode(const IReteToken& Token, TCallType CallType) override;
  String ToString() const override;

 protected:
  // Runs the first Count tests with the context's token and fact; stops at
  // the first failure.
  bool RunTests(int Count);
  std::vector<std::unique_ptr<TTavoSlotTest>> FTests;
  // Join tests are run by a direct call, the rest through PerformTest.
  std::vector<TTavoJoinTest*> FJoinTests;
};

class TJoinNode : public TTestNode {
  TAVO_CLASS(TJoinNode, TTestNode)
 public:
  TJoinNode() = default;
  ~TJoinNode() override;

  bool GetNegatedPattern() const { return FNegatedPattern; }
  void SetNegatedPattern(bool Value) { FNegatedPattern = Value; }
  bool GetUnique() const { return FUnique; }
  void SetUnique(bool Value) { FUnique = Value; }
  int GetHashKey() const { return FHashKey; }
  void SetHashKey(int Value) { FHashKey = Value; }
  bool GetShortCut() const { return FShortCut; }
  int GetMatches() const { return FMatches; }
  TTavoTokenTree* GetLeftMemory() const { return FLeftMemory.get(); }
  TTavoTokenTree* GetRightMemory() const { return FRightMemory.get(); }
  TTavoPattern* GetPattern() const { return FPattern; }
  // Only a backward-chaining pattern may ask for goals.
  void SetPattern(TTavoPattern* Pattern);
  TRule* GetRule() const { return FRule; }
  void SetRule(TRule* Value) { FRule = Value; }

  using TTestNode::AddTest;
  void AddTest(TSlotTestType Type, int TokenIndex, const String& LeftName, const String& RightName);
  void AddTest(TSlotTestType Type, int TokenIndex, const String& LeftName, int LeftSubIndex,
               const String& RightName, int RightSubIndex);
  // Keys both memories by the first equality of slots, if there is one.
  void PrepareShortCut();
  // A check of a test element further down the rule, which every token
  // that passes this join from the left meets there and no other node
  // sees between: Call must read nothing but the token's facts and call
  // only functions without side effects. A token arriving from the left
  // that the check surely refuses (its truth by EvaluateTruth is FALSE, or
  // TRUE when Negated) is dropped on arrival, so that it neither enters
  // this memory nor runs this join's tests; when the truth cannot be had
  // that way the token goes on, and the test element decides in its turn.
  // Checks are fixed when the rule is compiled.
  void AddGuard(const ITavoValue& Call, bool Negated);
  int GetGuardCount() const { return int(FGuards.size()); }
  void ClearMemory();
  bool Equals(const TTestNode* Node) const override;

  bool CallNode(const IReteToken& Token, TCallType CallType) override;
  String ToString() const override;

 protected:
  // A left token that found no fact on a backward-chaining join asks for
  // one: a goal fact of the companion template, its slots filled from the
  // pattern's literals and from the variables the token has bound, queued
  // to be asserted once the walk has ended.
  virtual void AskForBackChain(const IReteToken& Token);

 private:
  // Token meets the right memory; what passes is built on Parent, the
  // token as the left memory holds it, so that every token below shares
  // its chain with the one made when Token arrived and is found again
  // without a walk of the whole chain.
  void RunTestsVaryRight(const IReteToken& Token, const IReteToken& Parent);
  void RunTestsVaryLeft(const IReteToken& Token);
  bool ProbeKey(TFact* Fact, const TBindingInfo& Slot, int SubIndex, const TTavoTokenTree& Memory,
                int32_t& Hash, uint8_t& KeyType) const;
  // The join tests and the other tests against one candidate pair; the
  // context holds the left token and right fact when a test needs them.
  bool PairPasses(const TTavoToken& Left, TFact& Right, bool KeyEqual);
  IReteToken Join(const IReteToken& Left, const IFact& Right, float Strength);
  // Whether a check of AddGuard surely refuses Token.
  bool GuardRefuses(const IReteToken& Token);

  bool FNegatedPattern = false;
  std::unique_ptr<TTavoTokenTree> FRightMemory;
  std::unique_ptr<TTavoTokenTree> FLeftMemory;
  int FMatches = 0;
  TTavoPattern* FPattern = nullptr;
  TRule* FRule = nullptr;
  bool FUnique = false;
  int FHashKey = 101;
  bool FShortCut = false;
  // The key is a plain slot on both sides, whose equality a memory can
  // vouch for (see TTavoTokenTree::ForEachCandidate).
  bool FKeyIsSlot = false;
  int FTokenIndex = -1;
  int FRightSubIndex = -1;
  int FLeftSubIndex = -1;
  String FLeftFactIndex;
  String FRightFactIndex;
  // The key's slot readers, by position once a layout is seen.
  TBindingInfo FLeftKey;
  TBindingInfo FRightKey;
  // The further equalities of plain slots, beside the key, on each side:
  // the memories keep a hash of them with every token.
  std::vector<TBindingInfo> FLeftMatch;
  std::vector<TBindingInfo> FRightMatch;
  // Tests other than join tests need the context's token and fact.
  bool FNeedsContext = false;
  struct TGuard {
    ITavoValue Call;
    bool Negated;
  };
  std::vector<TGuard> FGuards;
};

class TPatternMatchTerminalNode : public TReteNode {
  TAVO_CLASS(TPatternMatchTerminalNode, TReteNode)
 public:
  TPatternMatchTerminalNode() = default;
  ~TPatternMatchTerminalNode() override;

  bool GetInitialized() const { return FInitialized; }
  // Can only turn the flag on.
  void SetInitialized(bool Value) { FInitialized = FInitialized || Value; }
  TRule* GetRule() const { return FRule; }
  void SetRule(TRule* Value) { FRule = Value; }
  int GetActivationCount() const { return FCount; }
  // By a walk of the list.
  TActivation* GetActivation(int Index) const;

  bool CallNode(const IReteToken& Token, TCallType CallType) override;
  virtual void AddActivation(const IReteToken& Token);
  // Takes an activation out of the list and tells the network.
  virtual void Deactivate(int Index);
  // The same for an activation, if the list holds it.
  void Deactivate(TActivation* Activation);
  virtual void RuleFired(TActivation* Activation);
  // Every activation, last first.
  virtual void StandDown();
  // The first activation whose token equals Token.
  virtual void StandDown(const IReteToken& Token);
  // Forgets the activations without telling anyone.
  void FastClearActivations();
  // Puts New where Old stands in the list, in Old's order of arrival; Old
  // leaves unannounced.
  void ReplaceActivation(TActivation* Old, TActivation* New);
  String ToString() const override;

 private:
  // The activations in order of arrival, linked through themselves, and
  // found by a hash of their tokens' facts: a retraction withdraws its
  // match without a walk of the list.
  void Link(TActivation* Activation);
  void Unlink(TActivation* Activation);

  bool FInitialized = false;
  TRule* FRule = nullptr;
  TActivation* FFirst = nullptr;
  TActivation* FLast = nullptr;
  int FCount = 0;
  uint64_t FSequence = 0;
  // The first activation of each hash of its token's facts, the others
  // chained through FNodeSame. It is built at the first withdrawal by a
  // token and kept while activations remain: a rule whose matches are only
  // ever fired or cleared never pays for it.
  TMekDictionary<uint32_t, TActivation*> FByChain;
  bool FIndexed = false;
  void Index(TActivation* Activation);
  void Unindex(TActivation* Activation);
};

}  // namespace tavo
