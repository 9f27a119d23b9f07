// Reflection over host classes: a registry that finds a class by its name,
// and the properties that each class publishes, read and written by name.
// Rules reach live host objects through it. A host registers a class once,
// before its engines run, with the builder that RegisterClass gives:
//
//   RegisterClass<TLamp>()
//       .Property(u"Watts", &TLamp::Watts)
//       .Property(u"Colour", &TLamp::GetColour, &TLamp::SetColour, ColourNames)
//       .Property(u"Burning", [](const TLamp& Lamp) { return Lamp.IsBurning(); }, nullptr);
//
// The kind of a property follows from its C++ type, checked as it compiles:
// integers, char16_t, enumerations and TSet with the names of their values,
// bool (the enumeration FALSE, TRUE), floats, String and UTF-8 std::string,
// pointers to classes of TObject, and TNotifyEvent. A class publishes its
// own properties and those of its registered ancestors.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "MekExceptions.h"
#include "MekObjects.h"
#include "MekSet.h"
#include "MekStrings.h"

namespace tavo {

inline constexpr char16_t SClassNotFound[] = u"Class not found: %s";
inline constexpr char16_t SDuplicateClassName[] = u"Another class is registered under the name %s";
inline constexpr char16_t SDuplicateProperty[] = u"Class %s already publishes a property %s";
inline constexpr char16_t SUnknownProperty[] = u"Class %s publishes no property %s";
inline constexpr char16_t SInvalidPropertyType[] = u"Invalid property type: %s";
inline constexpr char16_t SReadOnlyProperty[] = u"Property %s is read-only";
inline constexpr char16_t SInvalidPropertyValue[] = u"Invalid value for property %s: %s";
inline constexpr char16_t SInvalidPropertyObject[] = u"Property %s takes an object of class %s, not %s";
inline constexpr char16_t SEnumOutOfRange[] = u"%d is out of range for enumeration %s";

// The kinds of a published property. tkInteger holds the integers that fit
// in 32 signed bits; tkInt64 the wider ones.
enum TTypeKind {
  tkInteger,
  tkChar,
  tkEnumeration,
  tkFloat,
  tkString,
  tkSet,
  tkClass,
  tkMethod,
  tkInt64,
  tkUtf8String
};
using TTypeKinds = TSet<TTypeKind>;
// Kinds stored as a 64-bit integer: numbers, code units, ordinals and set bits.
inline constexpr TTypeKinds OrdinalTypeKinds = {tkInteger, tkChar, tkEnumeration, tkSet, tkInt64};
inline constexpr TTypeKinds StringTypeKinds = {tkString, tkUtf8String};

// The names of an enumeration's values, from ordinal 0 up.
class TEnumInfo {
 public:
  TEnumInfo(String TypeName, std::initializer_list<const char16_t*> Names);

  const String& GetTypeName() const { return FTypeName; }
  int GetCount() const { return int(FNames.size()); }
  // The name of Value; SEnumOutOfRange outside 0 to Count - 1.
  const String& GetName(int64_t Value) const;
  // The value of Name: the exact name first, else one that differs only in
  // case; -1 for none.
  int GetValue(StringView Name) const;

 private:
  String FTypeName;
  std::vector<String> FNames;
};

// The names of TTypeKind, "tkInteger" and so on.
const TEnumInfo& TypeKindInfo();
// bool as an enumeration: FALSE and TRUE, the rule language's truth atoms.
const TEnumInfo& BooleanInfo();
// The name of a value in messages, such as a property's kind.
inline const String& GetEnumName(const TEnumInfo& Info, int64_t Value) { return Info.GetName(Value); }
inline int GetEnumValue(const TEnumInfo& Info, StringView Name) { return Info.GetValue(Name); }

// A value of any property kind, tagged: what SetPropValue converts to the
// kind of the property it writes.
using TPropValue = std::variant<int64_t, double, String, TObject*>;

// One published property: its name, kind and accessors. Its object lives as
// long as the process, so the pointers that the look-ups give stay valid.
class TPropInfo {
 public:
  template <class V>
  struct TAccess {
    std::function<V(const TObject&)> Get;
    // Empty for a read-only property.
    std::function<void(TObject&, V)> Set;
  };
  // The accessors by storage: ordinal kinds, floats, strings, objects, events.
  using TAccessor = std::variant<TAccess<int64_t>, TAccess<double>, TAccess<String>, TAccess<TObject*>,
                                 TAccess<TNotifyEvent>>;

  // Min and Max bound the ordinal kinds but sets, whose bits EnumInfo bounds.
  TPropInfo(String Name, TTypeKind Kind, TAccessor Access, const TEnumInfo* EnumInfo = nullptr,
            const TClass* PropClass = nullptr, int64_t Min = 0, int64_t Max = 0);

  const String& GetName() const { return FName; }
  TTypeKind GetKind() const { return FKind; }
  // The names of an enumeration's or a set's values, else null.
  const TEnumInfo* GetEnumInfo() const { return FEnumInfo.get(); }
  // The class of an object property, else null.
  const TClass* GetPropClass() const { return FPropClass; }
  bool IsReadOnly() const;

  // Each reader and writer serves the kinds of its storage and raises
  // SInvalidPropertyType for the others; a writer raises SReadOnlyProperty
  // and, for a value out of the property's range, SInvalidPropertyValue.
  int64_t GetOrd(const TObject& Instance) const;
  void SetOrd(TObject& Instance, int64_t Value) const;
  // The name of an enumeration's value; the names of a set's members in
  // ordinal order, joined by "," and with Brackets in "[" and "]".
  String GetEnum(const TObject& Instance) const;
  String GetSet(const TObject& Instance, bool Brackets = false) const;
  double GetFloat(const TObject& Instance) const;
  void SetFloat(TObject& Instance, double Value) const;
  String GetStr(const TObject& Instance) const;
  void SetStr(TObject& Instance, const String& Value) const;
  TObject* GetObject(const TObject& Instance) const;
  // Null, or an object of the property's class.
  void SetObject(TObject& Instance, TObject* Value) const;
  TNotifyEvent GetMethod(const TObject& Instance) const;
  void SetMethod(TObject& Instance, TNotifyEvent Value) const;
  // Converts Value to the property's kind: a number or its text for the
  // numbers, a one-character text or a code unit for a character, a name
  // or an ordinal for an enumeration, names ("a,b", brackets optional) or
  // bits for a set, any text or number for a string, an object for an
  // object. Events take no tagged value.
  void SetValue(TObject& Instance, const TPropValue& Value) const;

  // Raises SInvalidPropertyType with the kind's name.
  [[noreturn]] void InvalidType() const;
  [[noreturn]] void InvalidValue(StringView Text) const;
  [[noreturn]] void InvalidObject(const TObject* Value) const;

 private:
  template <class V>
  const TAccess<V>& Access() const;
  template <class V>
  const TAccess<V>& Writable() const;

  String FName;
  TTypeKind FKind;
  TAccessor FAccess;
  std::shared_ptr<const TEnumInfo> FEnumInfo;
  const TClass* FPropClass;
  int64_t FMin;
  int64_t FMax;
};

class TClassRegistry;

// The type record of a registered class: the properties it publishes
// itself. What it publishes with its ancestors is found through the
// registry, which keeps the records.
class TTypeInfo {
 public:
  TTypeInfo(TClassRegistry& Registry, const TClass& Class) : FRegistry(Registry), FClass(Class) {}
  const TClass& GetClass() const { return FClass; }

 private:
  friend class TClassRegistry;
  friend void AddPropInfo(TTypeInfo& Info, std::unique_ptr<TPropInfo> Prop);
  TClassRegistry& FRegistry;
  const TClass& FClass;
  std::vector<std::unique_ptr<TPropInfo>> FProps;
};

// Registers Class under its name (again is harmless; another class of the
// same name raises SDuplicateClassName) and gives its record.
TTypeInfo& RegisterClassInfo(const TClass& Class);
// Publishes Prop for the class of Info; SDuplicateProperty when the class or
// an ancestor publishes one of that name.
void AddPropInfo(TTypeInfo& Info, std::unique_ptr<TPropInfo> Prop);

// The class registered under Name (exact case): FindClass raises
// SClassNotFound where GetClass gives null.
const TClass& FindClass(StringView Name);
const TClass* GetClass(StringView Name);
// A new instance through the class's factory, its after-construction step
// run; SCannotCreateInstance for a class without one.
TObject* CreateObject(const TClass& Class);
// Whether Instance is of Class or of a descendant; false for null.
bool IsClass(const TObject* Instance, const TClass& Class);

// The record of the nearest registered class from Class up, or null when
// that class publishes nothing, its ancestors included.
const TTypeInfo* ClassInfo(const TClass& Class);
inline const TTypeInfo* ClassInfo(const TObject& Instance) { return ClassInfo(Instance.ClassType()); }
// The names that a record publishes, its ancestors' first.
std::vector<String> GetPropList(const TTypeInfo& Info);
// The properties themselves, in the same order.
std::vector<const TPropInfo*> GetPropInfos(const TTypeInfo& Info);
// The property Name of Instance's class or its ancestors (exact case), or
// null; FindPropInfo raises SUnknownProperty where GetPropInfo gives null.
const TPropInfo* GetPropInfo(const TObject& Instance, StringView Name);
const TPropInfo& FindPropInfo(const TObject& Instance, StringView Name);

// The operations by instance and name, each raising SUnknownProperty for a
// name the class does not publish.
bool IsPublishedProp(const TObject& Instance, StringView Name);
TTypeKind PropType(const TObject& Instance, StringView Name);
int64_t GetOrdProp(const TObject& Instance, StringView Name);
void SetOrdProp(TObject& Instance, StringView Name, int64_t Value);
String GetStrProp(const TObject& Instance, StringView Name);
void SetStrProp(TObject& Instance, StringView Name, const String& Value);
// The texts of enumerations and sets, as TPropInfo::GetEnum and GetSet.
String GetEnumProp(const TObject& Instance, StringView Name);
void SetEnumProp(TObject& Instance, StringView Name, StringView Value);
String GetSetProp(const TObject& Instance, StringView Name, bool Brackets = false);
void SetSetProp(TObject& Instance, StringView Name, StringView Value);
double GetFloatProp(const TObject& Instance, StringView Name);
void SetFloatProp(TObject& Instance, StringView Name, double Value);
TObject* GetObjectProp(const TObject& Instance, StringView Name);
void SetObjectProp(TObject& Instance, StringView Name, TObject* Value);
TNotifyEvent GetMethodProp(const TObject& Instance, StringView Name);
void SetMethodProp(TObject& Instance, StringView Name, TNotifyEvent Value);
void SetPropValue(TObject& Instance, StringView Name, const TPropValue& Value);

// How a C++ type is published: its kind, its storage and the conversions
// between the two. Types without a specialisation have no kind.
template <class V, class = void>
struct TPropTraits {
  static constexpr bool Supported = false;
};

template <class V>
inline constexpr bool IsIntegerProp = std::is_integral_v<V> && !std::is_same_v<V, bool> &&
                                      !std::is_same_v<V, char16_t> && !std::is_same_v<V, char> &&
                                      !std::is_same_v<V, wchar_t> && !std::is_same_v<V, char8_t> &&
                                      !std::is_same_v<V, char32_t> && !(std::is_unsigned_v<V> && sizeof(V) > 4);

template <class V>
struct TPropTraits<V, std::enable_if_t<IsIntegerProp<V>>> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = std::in_range<int32_t>(std::numeric_limits<V>::max()) ? tkInteger : tkInt64;
  using TStorage = int64_t;
  static constexpr int64_t Min = std::numeric_limits<V>::min();
  static constexpr int64_t Max = int64_t(std::numeric_limits<V>::max());
  static int64_t Store(V Value) { return Value; }
  static V Load(int64_t Value) { return V(Value); }
};

template <>
struct TPropTraits<char16_t> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkChar;
  using TStorage = int64_t;
  static constexpr int64_t Min = 0;
  static constexpr int64_t Max = 0xFFFF;
  static int64_t Store(char16_t Value) { return Value; }
  static char16_t Load(int64_t Value) { return char16_t(Value); }
};

template <>
struct TPropTraits<bool> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkEnumeration;
  using TStorage = int64_t;
  static constexpr int64_t Min = 0;
  static constexpr int64_t Max = 1;
  static int64_t Store(bool Value) { return Value; }
  static bool Load(int64_t Value) { return Value != 0; }
};

template <class V>
struct TPropTraits<V, std::enable_if_t<std::is_enum_v<V>>> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = true;
  static constexpr TTypeKind Kind = tkEnumeration;
  using TStorage = int64_t;
  static int64_t Store(V Value) { return int64_t(Value); }
  static V Load(int64_t Value) { return V(Value); }
};

template <class E>
struct TPropTraits<TSet<E>> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = true;
  static constexpr TTypeKind Kind = tkSet;
  using TStorage = int64_t;
  static int64_t Store(TSet<E> Value) { return int64_t(Value.Bits()); }
  static TSet<E> Load(int64_t Value) { return TSet<E>::FromBits(uint64_t(Value)); }
};

template <class V>
struct TPropTraits<V, std::enable_if_t<std::is_floating_point_v<V>>> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkFloat;
  using TStorage = double;
  static double Store(V Value) { return double(Value); }
  static V Load(double Value) { return V(Value); }
};

template <>
struct TPropTraits<String> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkString;
  using TStorage = String;
  static String Store(const String& Value) { return Value; }
  static String Load(String Value) { return Value; }
};

template <>
struct TPropTraits<std::string> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkUtf8String;
  using TStorage = String;
  static String Store(const std::string& Value) { return Utf8ToString(Value); }
  static std::string Load(const String& Value) { return StringToUtf8(Value); }
};

template <class T>
struct TPropTraits<T*, std::enable_if_t<std::is_base_of_v<TObject, T>>> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkClass;
  using TStorage = TObject*;
  static TObject* Store(T* Value) { return Value; }
  // SetObject has checked the class; the cast checks the C++ type as well.
  static T* Load(TObject* Value) { return dynamic_cast<T*>(Value); }
};

template <>
struct TPropTraits<TNotifyEvent> {
  static constexpr bool Supported = true;
  static constexpr bool NeedsNames = false;
  static constexpr TTypeKind Kind = tkMethod;
  using TStorage = TNotifyEvent;
  static TNotifyEvent Store(const TNotifyEvent& Value) { return Value; }
  static TNotifyEvent Load(TNotifyEvent Value) { return Value; }
};

// Publishes the properties of class C; each call adds one and gives the
// builder back. The getter is a member function or a callable taking
// const C&; the setter a member function or a callable taking C& and the
// value, or nullptr for a read-only property. Enumerations and sets take
// the names of their values last.
template <class C>
class TClassBuilder {
 public:
  explicit TClassBuilder(TTypeInfo& Info) : FInfo(Info) {}

  template <class V>
  requires(!std::is_function_v<V>)
  TClassBuilder& Property(StringView Name, V C::*Field) {
    static_assert(!TPropTraits<V>::NeedsNames, "an enumeration or set property needs the names of its values");
    return Field_<V>(Name, Field, nullptr);
  }
  template <class V>
  requires(!std::is_function_v<V>)
  TClassBuilder& Property(StringView Name, V C::*Field, const TEnumInfo& Names) {
    static_assert(TPropTraits<V>::NeedsNames, "only enumerations and sets take names");
    return Field_<V>(Name, Field, &Names);
  }
  template <class G, class S>
  requires(std::invocable<const G&, const C&> && !std::is_same_v<S, TEnumInfo>)
  TClassBuilder& Property(StringView Name, G Getter, S Setter) {
    using V = std::remove_cvref_t<std::invoke_result_t<const G&, const C&>>;
    static_assert(!TPropTraits<V>::NeedsNames, "an enumeration or set property needs the names of its values");
    return Accessors<V>(Name, std::move(Getter), std::move(Setter), nullptr);
  }
  template <class G, class S>
  requires std::invocable<const G&, const C&>
  TClassBuilder& Property(StringView Name, G Getter, S Setter, const TEnumInfo& Names) {
    using V = std::remove_cvref_t<std::invoke_result_t<const G&, const C&>>;
    static_assert(TPropTraits<V>::NeedsNames, "only enumerations and sets take names");
    return Accessors<V>(Name, std::move(Getter), std::move(Setter), &Names);
  }

 private:
  template <class V>
  TClassBuilder& Field_(StringView Name, V C::*Field, const TEnumInfo* Names) {
    return Accessors<V>(
        Name, [Field](const C& Object) -> const V& { return Object.*Field; },
        [Field](C& Object, V Value) { Object.*Field = std::move(Value); }, Names);
  }

  template <class V, class G, class S>
  TClassBuilder& Accessors(StringView Name, G Getter, S Setter, const TEnumInfo* Names) {
    using TTraits = TPropTraits<V>;
    static_assert(TTraits::Supported, "this type has no property kind");
    using TStorage = typename TTraits::TStorage;
    TPropInfo::TAccess<TStorage> Access;
    Access.Get = [Getter](const TObject& Object) -> TStorage {
      return TTraits::Store(std::invoke(Getter, static_cast<const C&>(Object)));
    };
    if constexpr (!std::is_null_pointer_v<S>) {
      static_assert(std::invocable<const S&, C&, V>, "the setter must take the getter's type");
      Access.Set = [Setter](TObject& Object, TStorage Value) {
        std::invoke(Setter, static_cast<C&>(Object), TTraits::Load(std::move(Value)));
      };
    }
    int64_t Min = 0, Max = 0;
    if constexpr (requires { TTraits::Min; }) {
      Min = TTraits::Min;
      Max = TTraits::Max;
    } else if (Names) {
      Max = Names->GetCount() - 1;
    }
    const TEnumInfo* Info = Names;
    if constexpr (std::is_same_v<V, bool>) Info = &BooleanInfo();
    const TClass* PropClass = nullptr;
    if constexpr (TTraits::Kind == tkClass) PropClass = &std::remove_pointer_t<V>::StaticClass();
    AddPropInfo(FInfo, std::make_unique<TPropInfo>(String(Name), TTraits::Kind, std::move(Access), Info,
                                                   PropClass, Min, Max));
    return *this;
  }

  TTypeInfo& FInfo;
};

// Registers C (see RegisterClassInfo) and gives the builder of its properties.
template <class C>
TClassBuilder<C> RegisterClass() {
  static_assert(std::is_base_of_v<TObject, C>);
  return TClassBuilder<C>(RegisterClassInfo(C::StaticClass()));
}

}  // namespace tavo
