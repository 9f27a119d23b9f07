#include "core/TavoContext.h"

namespace tavo {

bool TBindingInfo::Equals(const TObject* Other) const {
  const TBindingInfo* Info = dynamic_cast<const TBindingInfo*>(Other);
  return Info && Info->FSubIndex == FSubIndex && Info->FFactIndex == FFactIndex &&
         Info->FSlotIndex == FSlotIndex;
}

String TBindingInfo::ToString() const {
  String Result = u"FactIdx=" + IntToStr(FFactIndex) + u" SlotIdx=" + FSlotIndex;
  if (FSubIndex != NoSubIndex) Result += u" SubIdx=" + IntToStr(FSubIndex);
  return Result;
}

void TBindingInfo::Assign(const TPersistent* Source) {
  if (const TBindingInfo* Info = dynamic_cast<const TBindingInfo*>(Source)) {
    FSubIndex = Info->FSubIndex;
    FFactIndex = Info->FFactIndex;
    FSlotIndex = Info->FSlotIndex;
    return;
  }
  TPersistent::Assign(Source);
}

}  // namespace tavo
