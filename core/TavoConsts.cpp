#include "core/TavoConsts.h"

namespace tavo {

namespace {

constexpr const char16_t* TavoTypeNames[] = {
    u"dtNone",     u"dtAtom",        u"dtString",       u"dtInteger",
    u"dtVariable", u"dtFactId",      u"dtFloat",        u"dtFunCall",
    u"dtFact",     u"dtList",        u"dtDescriptor",   u"dtObject",
    u"dtClass",    u"dtExternalAddress", u"dtSingletons", u"dtFuzzy",
    u"dtMultiVariable", u"dtSlot",   u"dtMultiSlot"};

static_assert(std::size(TavoTypeNames) == dtMultiSlot + 1);

}  // namespace

String GetTavoTypeName(TTavoType Type) {
  if (Type < dtNone || Type > dtMultiSlot) return IntToStr(int(Type));
  return TavoTypeNames[Type];
}

String SetToString(TTavoTypes Types, StringView Separator, bool Bracket) {
  String Result;
  if (Bracket) Result += u'[';
  bool First = true;
  Types.ForEach([&](TTavoType Type) {
    if (!First) Result += Separator;
    First = false;
    Result += StringView(TavoTypeNames[Type]).substr(2);
  });
  if (Bracket) Result += u']';
  return Result;
}

String TavoStringToString(StringView Text) {
  if (Text.size() >= 2 && Text.front() == u'"' && Text.back() == u'"')
    return String(Text.substr(1, Text.size() - 2));
  return String(Text);
}

}  // namespace tavo
