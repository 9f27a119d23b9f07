// The conditions of a rule: patterns on fact templates, each with its tests
// per slot. A rule owns its patterns, so they live beside it; the network
// compiles them into nodes, and the join test builds on the slot test here.
#pragma once

#include <memory>
#include <vector>

#include "core/TavoContext.h"
#include "core/TavoFunctions.h"
#include "knowledge/TavoFactTemplate.h"

namespace tavo {

class TTavoPattern;
class TRule;

enum TSlotTestType { sttEquals, sttNotEquals };

// A test that a node runs.
class TTavoSlotTest : public TPersistent {
  TAVO_CLASS(TTavoSlotTest, TPersistent)
 public:
  explicit TTavoSlotTest(TSlotTestType Type = sttEquals) : FSlotTestType(Type) {}
  void Assign(const TPersistent* Source) override;
  virtual TTavoSlotTest* Clone() const = 0;
  // The same class and the same type.
  virtual bool Equals(const TTavoSlotTest* Other) const;
  virtual bool PerformTest(TTavoContext* Context) = 0;
  TSlotTestType GetSlotTestType() const { return FSlotTestType; }
  void SetSlotTestType(TSlotTestType Value) { FSlotTestType = Value; }
  String ToString() const override;

 private:
  TSlotTestType FSlotTestType;
};

// One test of a pattern's slot: a literal, a variable or a call, at an item
// of a multislot or on the whole slot, joined to the test before by "&"
// (conjunction) or "|".
class TTavoPatternMatchTest : public TTavoSlotTest {
  TAVO_CLASS(TTavoPatternMatchTest, TTavoSlotTest)
 public:
  explicit TTavoPatternMatchTest(TTavoPattern* Pattern = nullptr) : FPattern(Pattern) {}

  const ITavoValue& GetSlotValue() const { return FSlotValue; }
  // Stores a clone and tells the pattern.
  void SetSlotValue(const ITavoValue& Value);
  int GetMultiSlotSubIndex() const { return FMultiSlotSubIndex; }
  void SetMultiSlotSubIndex(int Value);
  bool GetConjunction() const { return FConjunction; }
  void SetConjunction(bool Value);
  TTavoPattern* GetPattern() const { return FPattern; }
  void SetPattern(TTavoPattern* Value) { FPattern = Value; }

  // Passes on anything but FALSE; a negated test passes exactly on FALSE.
  bool PerformTest(TTavoContext* Context) override;
  TTavoSlotTest* Clone() const override;
  void Assign(const TPersistent* Source) override;
  bool Equals(const TTavoSlotTest* Other) const override;
  bool Equals(bool Negated, bool Conjunction, int SubIndex, const ITavoValue& Value) const;
  bool Equals(bool Negated, int SubIndex, const ITavoValue& Value) const;
  String ToString() const override;

 private:
  ITavoValue FSlotValue;
  int FMultiSlotSubIndex = NoSubIndex;
  bool FConjunction = true;
  TTavoPattern* FPattern;
};

// The tests of one slot; the pattern hears of every change.
class TSlotTests {
 public:
  explicit TSlotTests(TTavoPattern* Pattern) : FPattern(Pattern) {}
  int Count() const { return int(FItems.size()); }
  TTavoPatternMatchTest* Get(int Index) const { return FItems[size_t(Index)].get(); }
  void Add(TTavoPatternMatchTest* Test);
  void Delete(int Index);
  // Takes the test out; it is the caller's.
  TTavoPatternMatchTest* Extract(int Index);
  void Clear();

 private:
  friend class TTavoPattern;
  TTavoPattern* FPattern;
  std::vector<std::unique_ptr<TTavoPatternMatchTest>> FItems;
};

class TTavoPattern : public TPersistent {
  TAVO_CLASS(TTavoPattern, TPersistent)
 public:
  TTavoPattern(TComponent* Owner, const String& Name, const IFactTemplate& Template, int NegatedCount = 0);
  // A copy of Source's settings, template and tests, owned by Owner.
  TTavoPattern(TComponent* Owner, const TTavoPattern& Source);
  ~TTavoPattern() override;

  bool GetUnique() const { return FUnique; }
  void SetUnique(bool Value);
  bool GetExplicit() const { return FExplicit; }
  void SetExplicit(bool Value);
  const IFactTemplate& GetFactTemplate() const { return FFactTemplate; }
  int GetNegatedCount() const { return FNegatedCount; }
  void SetNegatedCount(int Value);
  // An odd count, by the remainder with its sign: (exists p) counts 2 and
  // is not negated in this sense.
  bool IsNegated() const { return FNegatedCount % 2 == 1; }
  const String& GetBoundName() const { return FBoundName; }
  void SetBoundName(const String& Value);
  const String& GetName() const { return FName; }
  void SetName(const String& Value);
  TComponent* GetOwner() const { return FOwner; }
  void SetOwner(TComponent* Value) { FOwner = Value; }
  const String& GetComment() const { return FComment; }
  void SetComment(const String& Value) { FComment = Value; }
  int GetNumSlotTests() const { return FNumSlotTests; }
  int GetNumORConstraints() const { return FNumORConstraints; }
  TNotifyEvent OnChange;

  // The slots in name order, whatever the template's order.
  int GetSlotCount() const { return int(FTests.size()); }
  const String& GetSlotName(int Index) const { return FTests[size_t(Index)].Name; }
  // The required number of items of a multislot, or -1.
  int GetSlotLength(int Index) const { return FTests[size_t(Index)].Length; }
  void SetSlotLength(int Index, int Length);
  TSlotTests* GetSlotTests(int Index) const { return FTests[size_t(Index)].Tests.get(); }
  int GetSlotTestCount(int Index) const;
  TTavoPatternMatchTest* GetSlotTest(int Index, int TestIndex) const;
  int IndexOfSlotName(StringView Name) const;

  virtual TTavoPatternMatchTest* CreatePatternMatchTest(TTavoPattern* Pattern, TSlotTestType Type, int SubIndex,
                                                        const ITavoValue& Value);
  // Appends Test to the slot's tests; the pattern owns it.
  virtual void AddTest(const String& SlotName, TTavoPatternMatchTest* Test);
  TTavoPatternMatchTest* AddTest(const String& SlotName, const ITavoValue& Value, int SubIndex, bool Conjunction,
                                 bool Negated);
  // Rewrites the tests of slots with "|" into one variable test and one
  // call of or.
  virtual void FixTests();

  virtual void Change();
  void BeginUpdate() { ++FUpdateCount; }
  void EndUpdate();
  void TestNotification(TTavoPatternMatchTest* Test, bool Added);
  void TestChange(TTavoPatternMatchTest* Test);
  void TestConjunctionChange(TTavoPatternMatchTest* Test);

  virtual TTavoPattern* Clone(TComponent* Owner) const;
  void Assign(const TPersistent* Source) override;
  String ToString() const override;

 private:
  struct TSlotEntry {
    String Name;
    int Length = -1;
    std::unique_ptr<TSlotTests> Tests;
  };
  int EnsureSlot(const String& Name);
  void SetTests(const TTavoPattern& Source);

  bool FUnique = false;
  bool FExplicit = false;
  IFactTemplate FFactTemplate;
  int FNegatedCount = 0;
  String FBoundName;
  String FName;
  std::vector<TSlotEntry> FTests;
  int FUpdateCount = 0;
  TComponent* FOwner;
  int FNumSlotTests = 0;
  int FNumORConstraints = 0;
  String FComment;
};

// The call a test stands for: eq or neq against Variable for a literal, the
// call itself, or not around it when negated.
IFunCall ConvertToFunCall(IReasoner* Reasoner, const TTavoPatternMatchTest& Test, const ITavoValue& Variable);

}  // namespace tavo
