#include "matching/TavoSlotTest.h"

#include "core/TavoVectors.h"

namespace tavo {

namespace {

// The slot of Info in Fact, or its item at the sub-index.
const ITavoValue& SideValue(TFact& Fact, const TBindingInfo& Info) {
  const ITavoValue& Value = ReadSlot(Fact, Info);
  if (Info.GetSubIndex() == NoSubIndex) return Value;
  return Value->GetAsList()->Get(Info.GetSubIndex());
}

}  // namespace

TTavoJoinTest::TTavoJoinTest(TSlotTestType Type, int TokenIndex, const String& LeftIndex,
                             const String& RightIndex)
    : TTavoSlotTest(Type), FLeft(TokenIndex, LeftIndex), FRight(0, RightIndex), FJoinTestType(tstSlot) {}

TTavoJoinTest::TTavoJoinTest(TSlotTestType Type, int TokenIndex, const String& LeftIndex, int LeftSubIndex,
                             const String& RightIndex, int RightSubIndex)
    : TTavoSlotTest(Type),
      FLeft(TokenIndex, LeftIndex, LeftSubIndex),
      FRight(0, RightIndex, RightSubIndex),
      FJoinTestType(tstMultiSlot) {}

bool TTavoJoinTest::Test(const TTavoToken& Left, TFact& Right) const {
  TFact* LeftFact = Left.GetFacts(FLeft.GetFactIndex());
  bool Result;
  if (FJoinTestType == tstMultiSlot) {
    // A position without a fact passes as it is, whatever the test's sense.
    if (!LeftFact) return true;
    Result = SideValue(*LeftFact, FLeft)->Equals(SideValue(Right, FRight));
  } else {
    // Plain slots always have a fact on the left; a corrupt token fails
    // the test instead of crashing.
    if (!LeftFact) return false;
    Result = ReadSlot(*LeftFact, FLeft)->Equals(ReadSlot(Right, FRight));
  }
  return GetSlotTestType() == sttNotEquals ? !Result : Result;
}

bool TTavoJoinTest::PerformTest(TTavoContext* Context) {
  IReteToken Token = Context->GetToken();
  IFact Fact = Context->GetFact();
  if (!Token || !Fact) throw ETavoException(SCorruptedToken);
  return Test(*Token, *Fact);
}

TTavoSlotTest* TTavoJoinTest::Clone() const {
  auto* Result = new TTavoJoinTest();
  Result->Assign(this);
  return Result;
}

bool TTavoJoinTest::Equals(const TTavoSlotTest* Other) const {
  if (!TTavoSlotTest::Equals(Other)) return false;
  auto* Test = static_cast<const TTavoJoinTest*>(Other);
  return FJoinTestType == Test->FJoinTestType && GetLeftIndex() == Test->GetLeftIndex() &&
         GetRightIndex() == Test->GetRightIndex() && GetLeftSubIndex() == Test->GetLeftSubIndex() &&
         GetRightSubIndex() == Test->GetRightSubIndex() && GetTokenIndex() == Test->GetTokenIndex();
}

void TTavoJoinTest::Assign(const TPersistent* Source) {
  if (auto* Test = dynamic_cast<const TTavoJoinTest*>(Source)) {
    TTavoSlotTest::Assign(Source);
    FLeft = TBindingInfo(Test->GetTokenIndex(), Test->GetLeftIndex(), Test->GetLeftSubIndex());
    FRight = TBindingInfo(0, Test->GetRightIndex(), Test->GetRightSubIndex());
    FJoinTestType = Test->FJoinTestType;
    return;
  }
  TTavoSlotTest::Assign(Source);
}

String TTavoJoinTest::ToString() const {
  String Result = TTavoSlotTest::ToString() + u" " + (FJoinTestType == tstSlot ? u"tstSlot" : u"tstMultiSlot") +
                  u" TokenIdx: " + IntToStr(GetTokenIndex());
  if (FJoinTestType == tstMultiSlot)
    Result += u" Left: " + GetLeftIndex() + u" " + IntToStr(GetLeftSubIndex()) + u" Right: " + GetRightIndex() +
              u" " + IntToStr(GetRightSubIndex());
  else
    Result += u" Left: " + GetLeftIndex() + u" Right: " + GetRightIndex();
  return Result;
}

}  // namespace tavo
