// The join test: a slot of the right fact against a slot of one fact of the
// left token. Joins run it for every candidate pair, directly and by slot
// position; PerformTest is the same test read from a context.
#pragma once

#include "core/TavoContext.h"
#include "knowledge/TavoFacts.h"
#include "knowledge/TavoPattern.h"
#include "matching/TavoToken.h"

namespace tavo {

using TJoinTestType = TTemplateSlotType;

class TTavoJoinTest : public TTavoSlotTest {
  TAVO_CLASS(TTavoJoinTest, TTavoSlotTest)
 public:
  TTavoJoinTest() = default;
  TTavoJoinTest(TSlotTestType Type, int TokenIndex, const String& LeftIndex, const String& RightIndex);
  TTavoJoinTest(TSlotTestType Type, int TokenIndex, const String& LeftIndex, int LeftSubIndex,
                const String& RightIndex, int RightSubIndex);

  int GetRightSubIndex() const { return FRight.GetSubIndex(); }
  const String& GetRightIndex() const { return FRight.GetSlotIndex(); }
  const String& GetLeftIndex() const { return FLeft.GetSlotIndex(); }
  int GetTokenIndex() const { return FLeft.GetFactIndex(); }
  int GetLeftSubIndex() const { return FLeft.GetSubIndex(); }
  TJoinTestType GetJoinTestType() const { return FJoinTestType; }

  // The context's fact is the right fact, its token the left token.
  bool PerformTest(TTavoContext* Context) override;
  // The same test on a candidate pair, without a context.
  bool Test(const TTavoToken& Left, TFact& Right) const;

  TTavoSlotTest* Clone() const override;
  bool Equals(const TTavoSlotTest* Other) const override;
  void Assign(const TPersistent* Source) override;
  String ToString() const override;

 private:
  // Coordinates of both sides; the left one's fact index is the token
  // index, and each keeps the slot position of the last layout seen.
  TBindingInfo FLeft;
  TBindingInfo FRight;
  TJoinTestType FJoinTestType = tstSlot;
};

}  // namespace tavo
