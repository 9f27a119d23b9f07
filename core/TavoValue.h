// The tagged value: one counted, mutable cell that holds every datum the
// engine stores, matches, evaluates or prints.
#pragma once

#include <cstdint>

#include "common/MekGenerics.h"
#include "core/TavoConsts.h"
#include "common/MekSharedText.h"
#include "core/TavoInterfaces.h"

namespace tavo {

class TTavoValue;


// The payload, read by the tag. The text kinds hold a shared text record
// (interned for all but dtString), the interface kinds a counted object; the
// value owns one reference to either.
union TTavoValueRec {
  int32_t VInteger;
  double VExtended;
  void* VPointer;
  TObject* VObject;
  const TClass* VClass;
  TSharedText* VText;
  TCloneableObject* VInterface;
};

// Lets a value take part in a component's free notification.
using TTavoValueNexus = TNotificationNexus<TTavoValue>;

// One value is three words: the object header, the tag and flags packed in
// the header's spare bytes, and the payload. The host's Tag, the change
// event and the nexus, which few values ever have, live out of line.
class TTavoValue : public TCloneableObject {
  TAVO_CLASS(TTavoValue, TCloneableObject)
 public:
  TTavoValue() { FValue.VExtended = 0; }
  explicit TTavoValue(const TClass* Class);
  TTavoValue(int32_t Value, TTavoType Type);
  TTavoValue(StringView Text, TTavoType Type);
  TTavoValue(const String& Text, TTavoType Type) : TTavoValue(StringView(Text), Type) {}
  TTavoValue(const char16_t* Text, TTavoType Type) : TTavoValue(StringView(Text), Type) {}
  explicit TTavoValue(double Value);
  explicit TTavoValue(const ITavoValue& Source);
  TTavoValue(TObject* Object, bool Owns);
  // A value holding an interface (list, call, fact, singletons, fuzzy set),
  // shared, not copied.
  template <class T, class = decltype(TValueInterfaceType<T>::Type)>
  explicit TTavoValue(const TRef<T>& Intf) {
    SetKind(TValueInterfaceType<T>::Type);
    FValue.VInterface = HoldInterface(Intf.Get());
  }
  ~TTavoValue() override;
  // Values are made and freed by the million: blocks of this class's size
  // come from a cache of the thread.
  static void* operator new(size_t Size);
  static void operator delete(void* Block, size_t Size) noexcept;
  // Notes whether the value is of this very class, whose Resolve the
  // evaluator may take the place of.
  void AfterConstruction() override;
  bool IsPlainClass() const { return (FPacked.Flags & vfPlainClass) != 0; }

  // Copying. Assign(persistent) is the road of Clone and shares lists;
  // Assign(interface) gives a list value a vector of its own.
  void Assign(const TPersistent* Source) override;
  void Assign(const ICloneableObject& Source) override;
  void AssignTo(TPersistent* Dest) const override;
  ICloneableObject Clone() const override;
  ITavoValue CloneValue() const;

  // Strict equality, the one of duplicate facts: 1 and 1.0 differ.
  bool Equals(const ITavoValue& Other) const { return EqualsValue(Other.Get()); }
  bool Equals(const TTavoValue* Other) const { return EqualsValue(Other); }
  bool Equals(const TCloneableObject* Other) const override;
  // Loose equality: the argument is read as this value's kind.
  virtual bool EqualsStar(const ITavoValue& Other) const;
  int32_t GetHashCode() const override;
  String ToString() const override { return GetToString(); }
  virtual String GetToString() const;
  // Appends the text of GetToString; the common kinds write straight into
  // Out, so that a caller reusing Out builds texts without allocating.
  void AppendText(String& Out) const;

  TTavoType GetDType() const { return TTavoType(FPacked.Kind); }
  const TTavoValueRec& GetValue() const { return FValue; }
  // The text of the text kinds, borrowed; empty for every other kind.
  StringView GetText() const {
    return TavoStringTypes.Contains(GetDType()) ? FValue.VText->View() : StringView();
  }
  // The shared record of the text kinds, or null.
  TSharedText* GetSharedText() const { return TavoStringTypes.Contains(GetDType()) ? FValue.VText : nullptr; }
  // The held interface of the interface kinds, borrowed, or null.
  TCloneableObject* GetInterface() const { return HoldsInterface() ? FValue.VInterface : nullptr; }

  // Readers: each converts or fails with SNotCorrectType.
  String GetAsString() const;
  String GetAsAtom() const { return GetAsString(); }
  String GetAsVariable() const { return GetAsString(); }
  String GetAsMultiVariable() const { return GetAsString(); }
  String GetAsSlot() const { return GetAsString(); }
  String GetAsMultiSlot() const { return GetAsString(); }
  int32_t GetAsInteger() const;
  double GetAsNumeric() const;
  double GetAsFloat() const { return GetAsNumeric(); }
  int32_t GetAsFactId() const;
  int32_t GetAsDescriptor() const;
  void* GetAsExternalAddress() const;
  TObject* GetAsObject() const;
  TObject* GetAsOwnedObject() const { return GetAsObject(); }
  const TClass* GetAsClass() const;
  template <class T = TFact>
  TRef<T> GetAsFact() const { return GetAsInterface<T>(); }
  template <class T = TFunctionCall>
  TRef<T> GetAsFunCall() const { return GetAsInterface<T>(); }
  template <class T = TValueVector>
  TRef<T> GetAsList() const { return GetAsInterface<T>(); }
  template <class T = TSingletonsVector>
  TRef<T> GetAsSingletons() const { return GetAsInterface<T>(); }
  template <class T = TIFuzzySet>
  TRef<T> GetAsFuzzy() const { return GetAsInterface<T>(); }
  // The held interface when the tag is T's, else SNotCorrectType.
  template <class T>
  TRef<T> GetAsInterface() const {
    return TRef<T>(static_cast<T*>(
        CheckedInterface(TValueInterfaceType<T>::Type, TValueInterfaceType<T>::Word)));
  }
  // The same, borrowed: no count changes hands.
  template <class T>
  T* PeekInterface() const {
    return static_cast<T*>(CheckedInterface(TValueInterfaceType<T>::Type, TValueInterfaceType<T>::Word));
  }

  // Setters: Changing, store tag and payload, Changed.
  virtual void SetAsAtom(const String& Value) { SetText(dtAtom, Value); }
  virtual void SetAsString(const String& Value) { SetText(dtString, Value); }
  virtual void SetAsVariable(const String& Value) { SetText(dtVariable, Value); }
  virtual void SetAsMultiVariable(const String& Value) { SetText(dtMultiVariable, Value); }
  virtual void SetAsSlot(const String& Value) { SetText(dtSlot, Value); }
  virtual void SetAsMultiSlot(const String& Value) { SetText(dtMultiSlot, Value); }
  virtual void SetAsInteger(int32_t Value) { SetInteger(dtInteger, Value); }
  virtual void SetAsFactId(int32_t Value) { SetInteger(dtFactId, Value); }
  virtual void SetAsDescriptor(int32_t Value) { SetInteger(dtDescriptor, Value); }
  virtual void SetAsFloat(double Value);
  virtual void SetAsExternalAddress(void* Value);
  virtual void SetAsObject(TObject* Value);
  // Only a component is owned this way; any other object is referenced.
  virtual void SetAsOwnedObject(TObject* Value);
  // Takes Value, of any class, for good: it is freed with the value and
  // cloned with it (a compiled variable's coordinates).
  void AdoptObject(TObject* Value);
  virtual void SetAsClass(const TClass* Value);
  template <class T>
  void SetAsFact(const TRef<T>& Value) { SetAsInterface(Value); }
  template <class T>
  void SetAsFunCall(const TRef<T>& Value) { SetAsInterface(Value); }
  template <class T>
  void SetAsList(const TRef<T>& Value) { SetAsInterface(Value); }
  template <class T>
  void SetAsSingletons(const TRef<T>& Value) { SetAsInterface(Value); }
  template <class T>
  void SetAsFuzzy(const TRef<T>& Value) { SetAsInterface(Value); }
  template <class T>
  void SetAsInterface(const TRef<T>& Value) {
    SetInterface(TValueInterfaceType<T>::Type, ICloneableObject(Value));
  }
  // Holds Value under an interface tag (dtFunCall, dtFact, dtList,
  // dtSingletons, dtFuzzy); a null Value gives, say, a null fact.
  void SetInterface(TTavoType Type, ICloneableObject Value);

  // True for a dtObject value that holds binding coordinates.
  bool HoldsBindingInfo() const { return GetDType() == dtObject && (FPacked.Flags & vfBindingInfo); }
  // True while the value owns a component, which it frees when it changes.
  bool IsOwningObject() const { return (FPacked.Flags & vfOwning) != 0; }

  // Back to dtNone, freeing an owned component; fires no event.
  virtual void Reset();
  // The datum this value stands for: the bound value of a variable, the
  // result of a call, a fuzzy set for singletons; the value itself otherwise.
  virtual ITavoValue Resolve(TObject* Context);

  TTavoValueChangeEvent GetOnChange() const;
  void SetOnChange(TTavoValueChangeEvent Value);

  // Free notification of an owned component.
  virtual void Notification(TComponent* Component, TOperation Operation);

  // The frame position of a variable within the deffunction that holds it,
  // counted from 1; 0 when none was fixed. A hint only: the name decides.
  uint16_t GetFrameIndex() const { return FPacked.Index; }
  void SetFrameIndex(uint16_t Value) { FPacked.Index = Value; }

 protected:
  virtual void Changing(TTavoType NewType);
  virtual void Changed();

 private:
  enum : uint8_t { vfOwning = 1, vfHasExtras = 2, vfBindingInfo = 4, vfPlainClass = 8 };
  struct TExtras;

  bool HoldsInterface() const {
    TTavoType Type = GetDType();
    return Type == dtFunCall || Type == dtFact || Type == dtList || Type == dtSingletons || Type == dtFuzzy;
  }
  void SetKind(TTavoType Type) { FPacked.Kind = uint8_t(Type); }
  void SetObject(TObject* Object);
  static TCloneableObject* HoldInterface(TCloneableObject* Object) {
    if (Object) Object->AddReference();
    return Object;
  }
  // Lets go of a held text or interface; the tag stays.
  void DropPayload() noexcept;
  TExtras* GetExtras(bool Create) const;
  void FreeExtras() noexcept;

  void AppendOwnText(String& Out) const;
  bool EqualsValue(const TTavoValue* Other) const;
  [[noreturn]] void NotCorrectType(const char16_t* Word) const;
  TCloneableObject* CheckedInterface(TTavoType Type, const char16_t* Word) const;
  void SetText(TTavoType Type, StringView Value);
  void SetInteger(TTavoType Type, int32_t Value);
  void StoreOwnedObject(TObject* Object, bool Adopt = false);
  // Owns an object that is no component.
  bool AdoptsPlainObject() const;
  void CopyFromInterface(const TTavoValue* Value);
  TObject* CloneOwnedObject() const;
  void FreeOwnedObject();
  // Assign from a value known to be one.
  void AssignValue(const TTavoValue* Value);
  void CopyPayload(const TTavoValue* Value);

  TTavoValueRec FValue;
};

// The shared constants. Ordinary values that live as long as the process
// and are never counted: nothing guards them, and callers must not change
// them.
extern const ITavoValue FCTrue;
extern const ITavoValue FCFalse;
extern const ITavoValue FCEmptyString;
extern const ITavoValue FCNil;
extern const ITavoValue FCNilList;
extern const ITavoValue FCCatch;
extern const ITavoValue FCFinally;
extern const ITavoValue FCExcept;
extern const ITavoValue FCElse;
extern const ITavoValue FCDo;
extern const ITavoValue FCEOF;
extern const ITavoValue FCThen;
extern const ITavoValue FCPI;
extern const ITavoValue FCZero;
extern const ITavoValue FCPopFocus;

// True when Value is one of the shared constants (by identity), FCPopFocus
// excepted.
bool IsValueConstant(const ITavoValue& Value);
// Whether Value is a variable, single or multifield.
inline bool IsVariable(const ITavoValue& Value) {
  return Value && (Value->GetDType() == dtVariable || Value->GetDType() == dtMultiVariable);
}
bool IsValueConstant(const TTavoValue* Value);

// A value reads as false exactly when it Equals FCFalse.
inline bool IsFalse(const ITavoValue& Value) { return Value && Value->Equals(FCFalse); }

// Truncates toward zero into 32 bits; values beyond the 64-bit range
// saturate first, and only the low 32 bits are kept, as integer conversion
// does everywhere in the engine.
int32_t TruncToInt32(double Value);

}  // namespace tavo
