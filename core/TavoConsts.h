// The shared vocabulary of the engine: enumerations, sets, special names,
// format strings, type keywords, event types and the failure type.
#pragma once

#include <cstdint>
#include <functional>

#include "common/MekGenerics.h"
#include "core/TavoMessages.h"

namespace tavo {

// Enumerations. The order is part of the contract: values live in bit sets
// and are compared by order.

enum TConstructScope { csImported, csLocal };
enum TTypeCheck { tcStatic, tcDynamic };
using TTypeChecks = TSet<TTypeCheck>;
enum TTokenAction { taClear, taAdd, taRemove, taUpdate };
enum TDuplicateConstructs { dcOverwrite, dcIgnore, dcError };
enum TErrorHandling { ehRaiseImmediate, ehRaiseAllAtEnd };
enum TSalience { sActivate, sEveryTime };
enum TRuleConstruct { rcPattern, rcAction };
enum TTavoDialogOption { doNew, doOpen, doSave, doSaveAs, doPrint, doPrintSetup };
enum TSearchStrategy { ssDepthFirst, ssBreadthFirst };
enum TInferenceEngineConstruct { iecDefType, iecDefTemplate, iecFactSet, iecFact, iecDefRule };
enum TTavoType {
  dtNone,
  dtAtom,
  dtString,
  dtInteger,
  dtVariable,
  dtFactId,
  dtFloat,
  dtFunCall,
  dtFact,
  dtList,
  dtDescriptor,
  dtObject,
  dtClass,
  dtExternalAddress,
  dtSingletons,
  dtFuzzy,
  dtMultiVariable,
  dtSlot,
  dtMultiSlot
};
using TTavoTypes = TSet<TTavoType>;
enum TTemplateSlotType { tstSlot, tstMultiSlot };
enum TValueConstraint { vcAtom, vcString, vcInteger, vcFloat };
using TValueConstraints = TSet<TValueConstraint>;
enum TConstructWatch { cwActivation, cwFact, cwRule, cwCompilation, cwStatistics, cwFocus };
using TConstructWatches = TSet<TConstructWatch>;
enum TValidAction {
  vaFileNew,
  vaFileOpen,
  vaFileSave,
  vaFileSaveAs,
  vaEditTypes,
  vaEditFacts,
  vaEditFactTemplates,
  vaEditRules,
  vaTavoRun,
  vaTavoRunOneStep,
  vaTavoReset,
  vaFileView,
  vaEditModules
};
enum TValidView { vvAgenda, vvFacts, vvFactTemplates, vvRules };
enum TSharedConstructs { mieNone, mieAll, mieCustom };

// Type sets. TavoIntegerTypes holds dtDescriptor, and TavoFactTypes holds
// dtInteger and dtFloat beside dtFactId: both are meant as they stand.

inline constexpr TTavoTypes TavoStringTypes{dtAtom,          dtString, dtVariable,
                                            dtMultiVariable, dtSlot,   dtMultiSlot};
inline constexpr TTavoTypes TavoNumericTypes{dtInteger, dtFloat};
inline constexpr TTavoTypes TavoIntegerTypes{dtInteger, dtFactId, dtDescriptor};
inline constexpr TTavoTypes TavoFactTypes{dtInteger, dtFactId, dtFloat};
inline constexpr TTavoTypes TavoVariableTypes{dtVariable, dtMultiVariable};
inline constexpr TTavoTypes TavoAlwaysValidTypes{dtNone, dtVariable, dtFunCall, dtMultiVariable};
inline constexpr TTavoTypes TavoMultiSlotTypes{dtList, dtMultiSlot};
inline constexpr TTavoTypes TavoSlotTypes{dtAtom,   dtString, dtInteger,   dtVariable,
                                          dtFactId, dtFloat,  dtFunCall,   dtFact,
                                          dtDescriptor, dtObject, dtClass, dtExternalAddress};
inline constexpr TTavoTypes TavoSlotTypesWithFuzzy = TavoSlotTypes + TTavoTypes{dtSingletons, dtFuzzy};
inline constexpr TTavoTypes TavoReparseTypes{dtFunCall, dtFact, dtFuzzy};
inline constexpr TConstructWatches TavoAllWatches = TConstructWatches::Range(cwActivation, cwFocus);

// Numeric constants.

inline constexpr int LocalBindingIndex = -2;
inline constexpr int NoSubIndex = -1;
inline constexpr int DefaultPrintMargin = 200;
inline constexpr int WrapTextColumn = 60;

// Names the system makes up itself.

inline constexpr char16_t SFactPrefix[] = u"__factidx";
inline constexpr char16_t SEqStarPrefix[] = u"_eq_";
inline constexpr char16_t SBackChainPrefix[] = u"need-";
inline constexpr char16_t SBlankMulti[] = u"_blank_$";
inline constexpr char16_t SBlankPrefix[] = u"_blank_";
inline constexpr char16_t SDefaultSlotName[] = u"__Data";
inline constexpr char16_t STestCE[] = u"test";
inline constexpr char16_t SLocalBinding[] = u"__LOCAL";
inline constexpr char16_t SPatternBinding[] = u"__PATTERN";
// The name of the main module.
inline constexpr char16_t SMainModuleName[] = u"MAIN";
inline constexpr char16_t SRuleBinding[] = u"__RULE";
inline constexpr char16_t SInitialFactPattern[] = u"Initial-Fact";
inline constexpr char16_t SInitialFact[] = u"(Initial-Fact)";
inline constexpr char16_t SNullFact[] = u"__NOT-OR-TEST-CE*";
inline constexpr char16_t SMultiSlotVar[] = u"$?__var";
inline constexpr char16_t SSlotVar[] = u"?__var";
inline constexpr char16_t SImplicitDefinedType[] = u"implicit";

// Format strings.

inline constexpr char16_t SFunctionError[] = u"%s error: %s";
inline constexpr char16_t CommentFormat[] = u"%s";
inline constexpr char16_t SyntaxFormat[] = u"     Syntax: %s";
inline constexpr char16_t CLIPSSyntaxFormat[] = u"(%s)";

// Type keywords of the rule language.

inline constexpr char16_t STypeSymbolKeyword[] = u"SYMBOL";
inline constexpr char16_t STypeAtomKeyword[] = u"ATOM";
inline constexpr char16_t STypeStringKeyword[] = u"STRING";
inline constexpr char16_t STypeIntegerKeyword[] = u"INTEGER";
inline constexpr char16_t STypeFloatKeyword[] = u"FLOAT";
inline constexpr char16_t STypeLexemeKeyword[] = u"LEXEME";
inline constexpr char16_t STypeNumberKeyword[] = u"NUMBER";
inline constexpr char16_t STypeClassKeyword[] = u"CLASS";
inline constexpr char16_t STypeDescriptorKeyword[] = u"DESCRIPTOR";
inline constexpr char16_t STypeObjectKeyword[] = u"OBJECT";
inline constexpr char16_t STypeExternalAddrKeyword[] = u"EXTERNALADDRESS";
inline constexpr char16_t STypeFuzzyKeyword[] = u"FUZZY";
inline constexpr char16_t STypeFactKeyword[] = u"FACT";
inline constexpr char16_t STypeFactIdKeyword[] = u"FACTID";
inline constexpr char16_t STypeVariableKeyword[] = u"?VARIABLE";

// Event types: bound callbacks with the sender first.

using TPrintOutEvent = std::function<void(TObject* Sender, const String& OutID, const String& Text)>;
using TReadLineEvent = std::function<void(TObject* Sender, const String& InID, String& Text)>;
using TInferenceEvent = std::function<void(TObject* Sender, int RulesFired)>;

// The exception type of the whole system.
class ETavoException : public EMekException {
 public:
  using EMekException::EMekException;
};

// The enumerator name of a type tag, as "dtFact".
String GetTavoTypeName(TTavoType Type);

// The names of the members of Types in ordinal order without their two-letter
// prefix, joined by Separator, in "[" "]" when Bracket is set.
String SetToString(TTavoTypes Types, StringView Separator = u", ", bool Bracket = false);

// Removes one pair of surrounding double quotes when the text has both.
String TavoStringToString(StringView Text);

}  // namespace tavo
