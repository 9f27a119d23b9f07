// The recursive-descent parser of the rule language.
#pragma once

#include "common/MekHashTables.h"
#include "common/MekStringList.h"
#include "language/TavoParser.h"
#include "language/TavoPrettyPrinter.h"

namespace tavo {

// The functions whose arguments parse as facts (start 0) or as
// (name value) pairs from argument Start to End, counted from 1.
struct TSlotArgRecord {
  uint16_t Start = 0;
  uint16_t End = 0;
};

class TTavoClipsParser : public TTavoParser {
  TAVO_CLASS(TTavoClipsParser, TTavoParser)
 public:
  explicit TTavoClipsParser(TInferenceEngine* Owner = nullptr, TTavoTokenizerStream* Stream = nullptr);

  bool Parse(bool Execute) override;
  bool ParseExpression(bool Execute) override;
  TParsedType GetConstructType() override;
  virtual TParsedType GetConstructType(const IStreamToken& Token);

  // Values and expressions.
  ITavoValue ParseValue() override;
  ITavoValue ParseValue(TTavoTypes Types, const ITavoDefinedType& DefinedType);
  ITavoValue ParseValue(const IFactSlot& Slot);
  IValueVector ParseValuePair();
  IValueVector ParseList() override;
  ISingletonsVector ParseSingletons();
  IFunCall ParseFunCall() override;
  ITavoValue ParseNExecuteFunCall() override;
  // One "?*name* = value" of a defglobal; the value is kept unevaluated.
  ITavoValue ParseVariable(String& Name);
  String ParseFullName(String& Module);
  IFact ParseFact() override;
  void ParseFactSlot(const IFact& Fact, String& Name);
  bool LoadFacts() override;

  // Constructs.
  IInterpretedFunction ParseFunction();
  void ParseGlobalVariables();
  IFactTemplate ParseFactTemplate();
  // One slot definition, made without a template.
  IFactSlot ParseFactTemplateSlot();
  // The type names up to ")", which stays unread; a named deftype among
  // them goes to Named.
  TTavoTypes ParseSlotTypes(ITavoDefinedType& Named);
  // The bounds go to the type, or without one to the fuzzy variable's
  // universe.
  void ParseRangeAndCardinality(const ITavoDefinedType& Type, bool IsCardinality, bool AllowVariables,
                                const IFuzzyVariable& Variable = nullptr);
  // The clauses of a fuzzy type: (range from to), (units u) and
  // (values (term name expression)...), up to the type's ")".
  IFuzzyVariable ParseFuzzyVariable();
  // One (term name expression) of a fuzzy variable.
  IFuzzySet ParseFuzzySet(const IFuzzyVariable& Variable);
  // The rest of a form up to its ")" as one fuzzy value of Variable: read,
  // resolved in the global context, and evaluated over the variable's
  // terms unless it is a fuzzy value already. Missing is the failure when
  // there is no variable or no engine to evaluate with.
  ITavoValue ParseFuzzyValue(const IFuzzyVariable& Variable, StringView Where, StringView Missing);
  void ParseAllowedEnumerations(const ITavoDefinedType& Type);
  ITavoDefinedType ParseDefinedType();
  // A new set owned by the engine, without an engine of its own yet; the
  // facts are not asserted.
  TFactSet* ParseFactSet();
  IModule ParseModule();
  // Rules. The variable table fixes the kind of each name of the left side
  // by its first appearance. The caller owns the rule.
  using TVariableTable = TMekStringHashTable<int>;
  TRule* ParseRule();
  void ParseRulePatterns(TRule* Rule, TVariableTable& Table);
  // Level counts the negations around the element. The caller owns the
  // pattern.
  TTavoPattern* ParsePattern(int Level, TVariableTable& Table);
  void ParseRuleActions(TRule* Rule, TVariableTable& Table);

  // The functions whose arguments are facts or pairs.
  void AddSlotFunction(const String& Name, int Start, int End);
  int GetSlotFunctionStart(StringView Name) const;
  int GetSlotFunctionEnd(StringView Name) const;
  void SetSlotFunctionStart(StringView Name, int Value);
  void SetSlotFunctionEnd(StringView Name, int Value);

  // Generated variable names: the prefix, the slot's name when a slot is
  // given, and the index when above 0.
  virtual String GenerateVarName(int Index, const IFactTemplate& Template, const String& Prefix,
                                 const IFactSlot& Slot);
  // A variable whose name is not in Names (while Unique): from index 1 on,
  // the template's name stands in for the prefix.
  ITavoValue GenerateVariable(const TStrings* Names, const IFactTemplate& Template, bool Unique,
                              const String& SlotName, const String& Prefix);
  ITavoValue GenerateVariable(const TStrings* Names, const IFactTemplate& Template, bool Unique,
                              const String& SlotName);

  // "(name arguments)" of a function's syntax.
  static String GetSyntaxStatement(const IUserFunction& Function);
  String GenerateSymbol(const String& Prefix);

  // The one way the grammar reports: message, location, line and the text
  // of the form so far, cut in the middle when long.
  [[noreturn]] virtual void ParseError(StringView Where, StringView Message);
  template <class... A>
  [[noreturn]] void ParseError(StringView Where, StringView Template, const A&... Args) {
    ParseError(Where, StringView(Format(Template, Args...)));
    __builtin_unreachable();
  }

  // The printers, module qualifiers as FPrintModuleQualifiers says; a
  // pattern's fillers are named by the owning engine.
  virtual String PrettyPrint(const TFactSet& FactSet);
  virtual String PrettyPrint(const IFact& Fact);
  virtual String PrettyPrint(const IFact& Fact, const String& SlotName);
  virtual String PrettyPrint(const IFact& Fact, const String& SlotName, const ITavoValue& Value);
  virtual String PrettyPrint(const IFact& Fact, const String& SlotName, const String& ValueText);
  virtual String PrettyPrint(const IFactSlot& Slot);
  virtual String PrettyPrint(const IFactTemplate& Template);
  virtual String PrettyPrint(const IFunCall& Call, bool SpecialForm = false);
  virtual String PrettyPrint(const IFuzzySet& Set, bool AsTerm);
  virtual String PrettyPrint(const IFuzzyVariable& Variable);
  virtual String PrettyPrint(const IModule& Module);
  virtual String PrettyPrint(const TRule& Rule);
  virtual String PrettyPrint(const TRule& Rule, TRuleConstruct Half);
  virtual String PrettyPrint(const TTavoPattern& Pattern);
  virtual String PrettyPrint(const String& Name, const ITavoValue& Value);
  virtual String PrettyPrint(const ISingletonsVector& Singletons);
  virtual String PrettyPrint(const IUserFunction& Function);
  virtual String PrettyPrint(const IInterpretedFunction& Function);
  virtual String PrettyPrint(const ITavoDefinedType& Type);
  virtual String PrettyPrint(const TValueHashTable& Globals);
  virtual String PrettyPrint(TParsedType Type);

  void Assign(const TPersistent* Source) override;

 protected:
  // "(" keyword name [comment]; gives the token that follows, unconsumed.
  IStreamToken ParseHeader(String& Name, String& Comment, bool HasComment, StringView Where,
                           StringView Message, StringView Keyword);
  // The same with a module-qualified name: a qualifier makes its module the
  // current one for all that follows.
  IStreamToken ParseHeader(String& Name, String& Module, String& Comment, bool HasComment, StringView Where,
                           StringView Message, StringView Keyword);

 private:
  TTavoClipsStream& Stream() const;
  IStreamToken Next();
  void PutBack(const IStreamToken& Token);
  int CurrentLine() const;
  bool IsValueToken(const IStreamToken& Token) const;
  ITavoValue FunCallValue();
  ITavoValue TokenValue(const IStreamToken& Token) const;
  ITavoValue CheckedValue(ITavoValue Value, TTavoTypes Types, const ITavoDefinedType& DefinedType);
  IStreamToken FinishHeader(String& Name, String& Comment, bool HasComment, StringView Keyword);
  bool NameTaken(StringView Keyword, const String& Name) const;
  TTavoContext* GlobalContext() const;
  // The slot's own implicit type, made (from its named type, if any) when
  // it has none yet.
  ITavoDefinedType ImplicitType(const IFactSlot& Slot);
  // Names up to ")" or the end, which stays unread.
  void ParseNameList(TModuleImportExport& Target, bool DefinedTypes);
  // The tests of one slot of a template pattern, up to its ")".
  void ParseSlotConstraints(TTavoPattern& Pattern, const String& SlotName, bool Ordered,
                            IStreamToken Token, TVariableTable& Table);
  // The properties from the token after "declare"; gives the token after
  // the declaration's ")".
  IStreamToken ParseRuleDeclarations(TRule& Rule, IStreamToken Token);

  TStringList<TSlotArgRecord> FSlotFunctions;
  // Nesting of the recursive productions; a limit keeps the stack safe.
  int FDepth = 0;
};

// The deepest nesting of calls, lists and points that the parser reads.
inline constexpr int MaxParseDepth = 256;

}  // namespace tavo
