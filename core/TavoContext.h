// Binding records: where a variable lies in a token.
#pragma once

#include "common/MekGenerics.h"
#include "core/TavoConsts.h"

namespace tavo {

// The coordinates of a variable in a token: the pattern (fact) index, the
// slot name or a special name, and the index inside a multifield slot. A
// dtObject value holding one is a variable reference compiled to coordinates.
class TBindingInfo : public TPersistent {
  TAVO_CLASS(TBindingInfo, TPersistent)
 public:
  TBindingInfo() = default;
  TBindingInfo(int FactIndex, String SlotIndex, int SubIndex = NoSubIndex)
      : FSubIndex(SubIndex), FFactIndex(FactIndex), FSlotIndex(std::move(SlotIndex)) {}

  int GetSubIndex() const { return FSubIndex; }
  int GetFactIndex() const { return FFactIndex; }
  const String& GetSlotIndex() const { return FSlotIndex; }
  void SetSubIndex(int Value) { FSubIndex = Value; }
  void SetFactIndex(int Value) { FFactIndex = Value; }
  void SetSlotIndex(const String& Value) { FSlotIndex = Value; }

  // All three coordinates equal; Other must be a TBindingInfo or descend from it.
  virtual bool Equals(const TObject* Other) const;
  String ToString() const override;
  void Assign(const TPersistent* Source) override;

 protected:
  int FSubIndex = NoSubIndex;
  int FFactIndex = 0;
  String FSlotIndex;
};

}  // namespace tavo
