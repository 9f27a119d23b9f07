// The printers of the rule language. What they print must parse again to
// the same objects, so every choice of layout here follows what the parser
// accepts: blanks and line ends are free, the order of clauses is not.
#include "language/TavoPrettyPrinter.h"

#include "common/MekFormat.h"
#include "common/MekStrings.h"
#include "core/TavoMessages.h"
#include "fuzzylib/FuzzyConsts.h"
#include "language/TavoClipsParser.h"

namespace tavo {

namespace {

const String Indent = IndentString;
const String CRLF = u"\r\n";

// Every line break of Text followed by Prefix.
String IndentLines(StringView Text, const String& Prefix) {
  String Result;
  for (size_t I = 0; I < Text.size(); ++I) {
    Result += Text[I];
    if (Text[I] == u'\n' && I > 0 && Text[I - 1] == u'\r') Result += Prefix;
  }
  return Result;
}

// A comment as the lexer reads it back: quoted and escaped like a string.
String Quoted(const String& Text) { return Make<TTavoValue>(Text, dtString)->GetToString(); }

// The lines of a comment that stand in front of a call or a pattern, each
// made a rule-language comment.
String CommentLines(const String& Comment) {
  String Result;
  size_t Start = 0;
  while (Start <= Comment.size()) {
    size_t End = Comment.find_first_of(u"\r\n", Start);
    String Line = Trim(StringView(Comment).substr(Start, End == String::npos ? String::npos : End - Start));
    if (!Line.empty()) Result += (Line[0] == u';' ? Line : u"; " + Line) + CRLF;
    if (End == String::npos) break;
    Start = End + ((Comment[End] == u'\r' && End + 1 < Comment.size() && Comment[End + 1] == u'\n') ? 2 : 1);
  }
  return Result;
}

String ValueText(const ITavoValue& Value) {
  if (!Value) return String();
  if (Value->GetDType() == dtFunCall) {
    IFunCall Call = Value->GetAsFunCall();
    if (Call) return PrettyPrint(Call);
  }
  // nil prints as nothing in output, but as code it must stay a word.
  if (Value->GetDType() == dtAtom && Value->GetAsAtom().empty()) return u"nil";
  if (Value->GetDType() == dtList)
    if (IValueVector List = Value->GetAsList()) {
      String Result;
      for (int I = 0; I < List->GetValueCount(); ++I) Result += (I > 0 ? u" " : u"") + ValueText(List->Get(I));
      return Result;
    }
  return Value->GetToString();
}

// The type names that ParseSlotTypes reads back to Types; the kinds that
// every slot accepts anyway are left out.
String TypeNames(TTavoTypes Types) {
  Types = Types - TavoMultiSlotTypes - TavoAlwaysValidTypes;
  if (Types == TavoSlotTypes - TavoAlwaysValidTypes || Types == TTavoTypes()) return u"?VARIABLE";
  return UpperCase(SetToString(Types, u" "));
}

String ModuleName(const IModule& Module) { return Module ? Module->GetName() : String(); }

String Qualified(bool Qualify, const String& Module, const String& Name) {
  return Qualify && !Module.empty() ? Module + u"::" + Name : Name;
}

String RangeBound(double Value) {
  if (Value <= -2147483648.0 || Value >= 2147483647.0) return u"?VARIABLE";
  return Format(u"%.4f", Value);
}

String CardinalityBound(int Value, bool Minimum) {
  if (Minimum ? Value < 0 : Value >= 2147483647) return u"?VARIABLE";
  return IntToStr(Value);
}

// The parser keeps the units as the token's text, which for a string is
// the text between a backslash and quote and a quote and backslash.
String UnitsClause(const String& Units) {
  String Text = Units;
  if (Text.size() >= 4 && Text.starts_with(u"\\\"") && Text.ends_with(u"\"\\"))
    Text = Text.substr(2, Text.size() - 4);
  return Text.find(u' ') == String::npos ? u"(units " + Text + u")" : u"(units \"" + Text + u"\")";
}

// The allowed-value clauses, each one trimmed.
std::vector<String> AllowedClauses(const TTavoDefinedType& Type) {
  std::vector<String> Result;
  String Text = GetAllowedString(Type);
  size_t Start = 0;
  while (Start < Text.size()) {
    size_t End = Text.find(u"\r\n", Start);
    String Line = Trim(StringView(Text).substr(Start, End == String::npos ? String::npos : End - Start));
    if (!Line.empty()) Result.push_back(Line);
    if (End == String::npos) break;
    Start = End + 2;
  }
  return Result;
}

// The clauses a type adds to its ancestor: range, cardinality, units and
// allowed values, each where it differs from the ancestor's.
std::vector<String> TypeClauses(const TTavoDefinedType& Type) {
  const TTavoDefinedType* Ancestor = Type.GetAncestor().Get();
  std::vector<String> Result;
  bool HasRange = Type.GetRangeLimited() || Type.GetMinRange() > -2147483648.0 || Type.GetMaxRange() < 2147483647.0;
  if (HasRange && !(Ancestor && Ancestor->GetMinRange() == Type.GetMinRange() &&
                    Ancestor->GetMaxRange() == Type.GetMaxRange()))
    Result.push_back(u"(range " + RangeBound(Type.GetMinRange()) + u" " + RangeBound(Type.GetMaxRange()) + u")");
  if (Type.GetCardinalityLimited() &&
      !(Ancestor && Ancestor->GetCardinalityLimited() && Ancestor->GetMinCardinality() == Type.GetMinCardinality() &&
        Ancestor->GetMaxCardinality() == Type.GetMaxCardinality()))
    Result.push_back(u"(cardinality " + CardinalityBound(Type.GetMinCardinality(), true) + u" " +
                     CardinalityBound(Type.GetMaxCardinality(), false) + u")");
  if (!Type.GetUnits().empty() && !(Ancestor && Ancestor->GetUnits() == Type.GetUnits()))
    Result.push_back(UnitsClause(Type.GetUnits()));
  std::vector<String> Allowed = AllowedClauses(Type);
  if (!(Ancestor && AllowedClauses(*Ancestor) == Allowed)) Result.insert(Result.end(), Allowed.begin(), Allowed.end());
  return Result;
}

// The default of a slot as a qualifier with a blank behind, or empty text
// when the slot keeps the default it would get anyway.
String SlotDefaultText(const TFactSlot& Slot) {
  const ITavoValue& Default = Slot.GetSlotDefault();
  if (!Default || Default->Equals(FCNil) || Default->Equals(FCNilList)) return String();
  String Text = Trim(ValueText(Default));
  if (Text.empty()) return String();
  return (Slot.GetDefaultDynamic() ? u"(default-dynamic " : u"(default ") + Text + u") ";
}

// The tests of one slot of a pattern: "&" or "|" inside one field, a blank
// between fields.
String SlotTestsText(const TTavoPattern& Pattern, int SlotIndex, bool StripNegation) {
  String Result;
  bool TestCE = Pattern.GetName() == STestCE;
  for (int I = 0; I < Pattern.GetSlotTestCount(SlotIndex); ++I) {
    TTavoPatternMatchTest* Test = Pattern.GetSlotTest(SlotIndex, I);
    if (I > 0) {
      if (Test->GetMultiSlotSubIndex() == Pattern.GetSlotTest(SlotIndex, I - 1)->GetMultiSlotSubIndex())
        Result += Test->GetConjunction() ? u"&" : u"|";
      else
        Result += u" ";
    }
    if (Test->GetSlotTestType() == sttNotEquals && !StripNegation) Result += u"~";
    const ITavoValue& Value = Test->GetSlotValue();
    if (Value && Value->GetDType() == dtFunCall && !TestCE) Result += u":";
    Result += ValueText(Value);
  }
  return Result;
}

String Filler(const IFactSlot& Slot, IRuleEngine* Symbols, int& Counter) {
  String Prefix = Slot && Slot->IsMulti() ? SMultiSlotVar : SSlotVar;
  if (Symbols) return Symbols->GenerateSymbol(Prefix);
  return Prefix + IntToStr(++Counter);
}

}  // namespace

// Facts

String PrettyPrintFactSlot(const IFact& Fact, const String& SlotName, const String& ValueText) {
  if (ValueText.empty()) return String();
  const IFactTemplate& Template = Fact->GetTemplate();
  if (Template && Template->IsOrdered()) return ValueText;
  return u"(" + SlotName + u" " + ValueText + u")";
}

String PrettyPrintFactSlot(const IFact& Fact, const String& SlotName, const ITavoValue& Value) {
  return PrettyPrintFactSlot(Fact, SlotName, TrimRight(ValueText(Value)));
}

String PrettyPrintFactSlot(const IFact& Fact, const String& SlotName) {
  return PrettyPrintFactSlot(Fact, SlotName, Fact->GetValue(SlotName));
}

String PrettyPrint(const IFact& Fact) {
  String Result = u"(";
  const IFactTemplate& Template = Fact->GetTemplate();
  if (Template && !Template->GetTemplateName().empty()) {
    Result += Template->GetTemplateName();
    if (Template->IsOrdered()) {
      String Data = PrettyPrintFactSlot(Fact, SDefaultSlotName);
      if (!Data.empty()) Result += u" " + Data;
    } else {
      const TStringList<int>& Names = Template->GetSlotNames();
      for (int I = 0; I < Names.Count(); ++I) {
        String Slot = PrettyPrintFactSlot(Fact, Names.Get(I));
        if (!Slot.empty()) Result += u" " + Slot;
      }
    }
    return Result + u")";
  }
  for (int I = 0; I < Fact->GetValueCount(); ++I) Result += u" " + TrimRight(ValueText(Fact->GetValueAt(I)));
  return Result + u")";
}

String PrettyPrint(const TFactSet& FactSet, bool Qualify) {
  String Module = FactSet.GetModule() == SMainModuleName ? String() : FactSet.GetModule();
  String Result = u"(deffacts " + Qualified(Qualify, Module, FactSet.GetFactSetName());
  if (!FactSet.GetComment().empty()) Result += u" " + Quoted(FactSet.GetComment());
  // A line's fact is read from its text when first asked for; the text is
  // what the set was given, and prints as it stands.
  // An entry emptied when its template went prints nothing.
  for (int I = 0; I < FactSet.Count(); ++I)
    if (!FactSet.GetText(I).empty()) Result += CRLF + Indent + IndentLines(FactSet.GetText(I), Indent);
  return Result + u")";
}

// Templates

String PrettyPrint(const IFactSlot& Slot) {
  String Result = (Slot->IsMulti() ? u"(multislot " : u"(slot ") + Slot->GetName() + u" ";
  String Default = SlotDefaultText(*Slot);
  TTavoTypes Types = Slot->GetSlotType();
  bool AllTypes = Types == TavoSlotTypes || Types == TavoSlotTypes + TavoMultiSlotTypes;
  if (const ITavoDefinedType& Type = Slot->GetExtendedTypeInfo()) {
    if (Type->GetImplicit()) {
      // The implicit type holds the clauses; the kinds stay the slot's own.
      if (!AllTypes) Result += u"(type " + TypeNames(Types) + u") ";
      Result += PrettyPrint(Type, false, true);
    } else {
      Result += u"(type " + Type->GetName() + u")";
    }
    if (!Default.empty()) Result += Indent + Indent + Default;
  } else {
    if (!AllTypes) Result += u"(type " + TypeNames(Types) + u")";
    if (!Default.empty()) Result += CRLF + Indent + Indent + Default;
  }
  return TrimRight(Result) + u")";
}

String PrettyPrint(const IFactTemplate& Template, bool Qualify) {
  String Result =
      u"(deftemplate " + Qualified(Qualify, ModuleName(Template->GetModule()), Template->GetTemplateName());
  if (!Template->GetComment().empty()) Result += u" " + Quoted(Template->GetComment());
  if (Template->GetParent()) Result += CRLF + Indent + u"extends " + Template->GetParent()->GetTemplateName();
  if (Template->IsOrdered()) {
    const IFactSlot& Data = Template->GetSlot(SDefaultSlotName);
    const ITavoDefinedType& Type = Data->GetExtendedTypeInfo();
    String Definition = PrettyPrint(Data);
    // A template without slots is made ordered again by itself.
    if (Type && !Type->GetImplicit())
      Result += u" is-a " + Type->GetName();
    else if (Definition != u"(multislot " + String(SDefaultSlotName) + u")")
      Result += u" " + Definition;
  } else {
    const TStringList<int>& Names = Template->GetSlotNames();
    for (int I = 0; I < Names.Count(); ++I)
      Result += CRLF + Indent + IndentLines(PrettyPrint(Template->GetSlot(Names.Get(I))), Indent);
  }
  return TrimRight(Result) + u")";
}

// Calls and functions

String PrettyPrint(const IFunCall& Call, bool SpecialForm) {
  String Result = CommentLines(Call->GetComment());
  Result += u"(";
  Result += Call->GetName();
  for (int I = 0; I < Call->GetArgumentCount(); ++I) {
    const ITavoValue& Argument = Call->GetArgument(I);
    String Text = ValueText(Argument);
    // A list among the arguments is a slot and its value, as modify and
    // duplicate take them: it reads back only in its parentheses.
    const bool Pair = Argument && Argument->GetDType() == dtList;
    Result += (SpecialForm && I > 0) || Pair ? u" (" + Text + u")" : u" " + Text;
  }
  return TrimRight(Result) + u")";
}

String PrettyPrint(const IInterpretedFunction& Function) {
  String Result = u"(deffunction " + Function->GetFunctionName() + u" (";
  for (int I = 0; I < Function->GetArgumentCount(); ++I)
    Result += (I > 0 ? u" " : u"") + ValueText(Function->GetArgument(I));
  Result += u")";
  if (!Function->GetComment().empty()) Result += CRLF + Indent + Quoted(Function->GetComment());
  for (int I = 0; I < Function->GetStatementCount(); ++I)
    Result += CRLF + Indent + IndentLines(ValueText(Function->GetStatement(I)), Indent);
  return Result + CRLF + u")";
}

namespace {

// Text broken at blanks into lines of at most Column characters, where it
// can be; a longer word stands on a line of its own.
String WrapText(StringView Text, const String& Break, size_t Column) {
  String Result, Line;
  size_t Start = 0;
  while (Start < Text.size()) {
    size_t End = Text.find(u' ', Start);
    if (End == StringView::npos) End = Text.size();
    StringView Word = Text.substr(Start, End - Start);
    Start = End + 1;
    if (Word.empty()) continue;
    if (!Line.empty() && Line.size() + 1 + Word.size() > Column) {
      Result += Line + Break;
      Line.clear();
    }
    if (!Line.empty()) Line += u' ';
    Line += Word;
  }
  return Result + Line;
}

}  // namespace

namespace {

// What each construct does and how it is written, for its help comment.
struct TConstructHelp {
  const char16_t* Comment;
  const char16_t* Syntax;
};

const TConstructHelp ConstructHelps[] = {
    {u"Defines a rule: when facts match its patterns, the rule is activated, and when it fires its actions run.",
     u"(defrule <name> [<comment>] [(declare <property>+)] <conditional-element>* => <action>*)"},
    {u"Defines a set of facts that every reset asserts.", u"(deffacts <name> [<comment>] <fact>*)"},
    {u"Defines the template of facts with named slots, each with its type and default.",
     u"(deftemplate <name> [<comment>] [extends <template-name>] <slot-definition>*)"},
    {u"Defines a function in the rule language: its parameters, and the expressions it evaluates in turn; the "
     u"last one's value is the result.",
     u"(deffunction <name> [<comment>] (<parameter>* [<wildcard-parameter>]) <expression>*)"},
    {u"Defines global variables, each bound to the value of its expression at once and again at each reset.",
     u"(defglobal <global-assignment>*)"},
    {u"Defines a type of values: its base types, range, cardinality, units, allowed values or fuzzy terms.",
     u"(deftype <name> [<comment>] extends (type <type>+) <constraint>*)"},
    {u"Defines a module and what it exports to and imports from other modules.",
     u"(defmodule <name> [<comment>] <export-or-import-statement>*)"},
};

}  // namespace

String PrettyPrint(TParsedType Type) {
  const String Keyword = TTavoParser::GetConstructName(Type);
  if (Keyword.empty()) return String();
  const TConstructHelp& Help = ConstructHelps[Type - ptRule];
  String Text = Keyword + u" function" + CRLF + CRLF + WrapText(Help.Comment, CRLF, size_t(WrapTextColumn)) + CRLF +
                CRLF + u"Syntax:" + CRLF + Help.Syntax;
  return u";; " + IndentLines(Text, u";; ");
}

String PrettyPrint(const IUserFunction& Function) {
  if (auto* Interpreted = dynamic_cast<TInterpretedFunction*>(Function.Get()))
    return PrettyPrint(IInterpretedFunction(Interpreted));
  String Result = u";; deffunction " + Function->GetFunctionName() + CRLF;
  if (!Function->GetComment().empty())
    Result += u";; " + WrapText(Function->GetComment(), CRLF + u";; " + Indent, size_t(WrapTextColumn)) + CRLF;
  return Result + u";; " + Format(u"     Syntax: %s", TrimLeft(TTavoClipsParser::GetSyntaxStatement(Function)));
}

String PrettyPrintVariable(const String& Name, const ITavoValue& Value) {
  String Variable = !Name.empty() && Name[0] == u'?' ? Name : u"?" + Name;
  return Variable + u" = " + ValueText(Value);
}

String PrettyPrint(const TValueHashTable& Globals) {
  String Result = u"(defglobal";
  for (int I = 0; I < Globals.Count(); ++I)
    Result += CRLF + Indent + PrettyPrintVariable(Globals.GetKeyByIndex(I), Globals.GetItemByIndex(I));
  return Result + u")";
}

// Fuzzy values

String PrettyPrint(const ISingletonsVector& Singletons) {
  if (!Singletons || Singletons->GetCount() == 0) return String();
  String Result = u"(";
  for (int I = 0; I < Singletons->GetCount(); ++I)
    Result += u"(" + ValueText(Singletons->GetXValues(I)) + u" " + ValueText(Singletons->GetYValues(I)) + u") ";
  return Result + u")";
}

String PrettyPrint(const IFuzzySet& Set, bool AsTerm) {
  String Shape;
  // The arguments as the shape functions take them; the set keeps them in
  // its own order.
  auto Arguments = [&](std::initializer_list<int> Order) {
    String Text;
    for (int I : Order) Text += u" " + Format(u"%.4f", Set->GetShapeArgument(I));
    return Text;
  };
  switch (Set->GetSetType()) {
    case fstSCurve:
      Shape = u"(s" + Arguments({0, 1}) + u")";
      break;
    case fstZCurve:
      Shape = u"(z" + Arguments({0, 1}) + u")";
      break;
    case fstTriangle:
      Shape = u"(tri" + Arguments({0, 1, 2}) + u")";
      break;
    case fstPI:
      // (pi center width) or (pi left center right).
      Shape = u"(pi" + (Set->GetShapeArgumentCount() >= 3 ? Arguments({0, 2, 1}) : Arguments({1, 0})) + u")";
      break;
    case fstBeta:
      // (beta center width inflection [weight]).
      Shape = u"(beta" + (Set->GetShapeArgumentCount() >= 4 ? Arguments({1, 0, 2, 3}) : Arguments({1, 0, 2})) + u")";
      break;
    case fstPoints:
      Shape = u"(";
      for (int I = 0; I < Set->GetCount(); ++I)
        Shape += u"(" + Format(u"%.4f %.4f", Set->GetX(I), Set->GetY(I)) + u") ";
      Shape += u")";
      break;
  }
  return AsTerm ? u"(term " + Set->GetName() + u" " + Shape + u")" : Shape;
}

String PrettyPrint(const IFuzzyVariable& Variable) {
  String Result = Indent + u"(range " + Format(u"%.4f %.4f", Variable->GetMinimum(), Variable->GetMaximum()) + u")" + CRLF;
  if (!Variable->GetUnits().empty()) Result += Indent + UnitsClause(Variable->GetUnits()) + CRLF;
  Result += Indent + u"(values " + CRLF;
  for (int I = 0; I < Variable->GetFuzzySetCount(); ++I) {
    const IFuzzySet& Set = Variable->GetFuzzySet(I);
    // A term without points has no text that reads back; it is the
    // "empty" term, which the variable makes again when it is named.
    if (Set && Set->IsTerm() && Set->GetCount() > 0) Result += Indent + Indent + PrettyPrint(Set, true) + CRLF;
  }
  return Result + Indent + u")";
}

// Defined types

String PrettyPrint(const ITavoDefinedType& Type, bool Qualify, bool Implicit) {
  bool Fuzzy = Type->GetBaseTypes().Contains(dtFuzzy) && Type->GetFuzzyType();
  if (Implicit) {
    String Result;
    for (const String& Clause : TypeClauses(*Type)) Result += Clause + u" ";
    return TrimRight(Result);
  }
  String Result = u"(deftype " + Qualified(Qualify, ModuleName(Type->GetModule()), Type->GetName());
  if (!Type->GetComment().empty()) Result += CRLF + Indent + Quoted(Type->GetComment());
  Result += CRLF + Indent + u"extends (type ";
  if (const ITavoDefinedType& Ancestor = Type->GetAncestor()) {
    Result += Ancestor->GetName();
    TTavoTypes Own = Type->GetBaseTypes() - Ancestor->GetBaseTypes() - TavoAlwaysValidTypes;
    if (Own != TTavoTypes()) Result += u" " + TypeNames(Own);
  } else {
    Result += Fuzzy ? String(u"FUZZY") : TypeNames(Type->GetBaseTypes());
  }
  Result += u")";
  if (Fuzzy) {
    Result += CRLF + PrettyPrint(Type->GetFuzzyType());
  } else {
    for (const String& Clause : TypeClauses(*Type)) Result += CRLF + Indent + Clause;
  }
  return Result + u")";
}

// Modules

namespace {

String SharingClauses(const TModuleImportExport& Items, const String& Head) {
  String Result;
  auto Kind = [&](const char16_t* Keyword, TSharedConstructs Shared, const TStringList<int>& Names) {
    if (Shared == mieAll) {
      Result += Indent + u"(" + Head + Keyword + u" ?ALL)" + CRLF;
    } else if (Shared == mieCustom && Names.Count() > 0) {
      Result += Indent + u"(" + Head + Keyword;
      for (int I = 0; I < Names.Count(); ++I) Result += u" " + Names.Get(I);
      Result += u")" + CRLF;
    }
  };
  Kind(u"deftype", Items.GetDefinedTypesShared(), Items.GetDefinedTypes());
  Kind(u"deftemplate", Items.GetFactTemplatesShared(), Items.GetFactTemplates());
  return Result;
}

}  // namespace

String PrettyPrint(const IModule& Module) {
  String Result = u"(defmodule " + Module->GetName();
  if (!Module->GetComment().empty()) Result += u" " + Quoted(Module->GetComment());
  Result += CRLF;
  if (const IModuleExport& Export = Module->GetExportItems()) Result += SharingClauses(*Export, u"export ");
  for (int I = 0; I < Module->GetImportCount(); ++I) {
    const IModuleImport& Import = Module->GetImport(I);
    String Clauses = SharingClauses(*Import, u"import " + Import->GetModule() + u" ");
    // An import that shares nothing still names its module.
    Result += Clauses.empty() ? Indent + u"(import " + Import->GetModule() + u" ?NONE)" + CRLF : Clauses;
  }
  return TrimRight(Result) + u")";
}

// Patterns and rules

String PrettyPrint(const TTavoPattern& Pattern, IRuleEngine* Symbols) {
  const IFactTemplate& Template = Pattern.GetFactTemplate();
  if (!Template) throw ETavoException(SNoTemplate);
  String Result;
  int Counter = 0;
  int Negations = Pattern.GetNegatedCount();
  if (Pattern.GetName() == STestCE) {
    // A negation around a test lives in its one test's flag.
    int Data = Pattern.IndexOfSlotName(SDefaultSlotName);
    String Text = Data >= 0 ? SlotTestsText(Pattern, Data, true) : String();
    if (Data >= 0 && Pattern.GetSlotTestCount(Data) > 0 &&
        Pattern.GetSlotTest(Data, 0)->GetSlotTestType() == sttNotEquals)
      Negations = 1;
    Result = u"(" + String(Pattern.GetName()) + u" " + Text + u")";
  } else if (Template->IsOrdered()) {
    int Data = Pattern.IndexOfSlotName(SDefaultSlotName);
    String Text = Data >= 0 ? SlotTestsText(Pattern, Data, false) : String();
    if (Text.empty()) Text = Filler(Template->GetSlot(SDefaultSlotName), Symbols, Counter);
    Result = u"(" + Pattern.GetName() + u" " + Text + u")";
  } else {
    Result = u"(" + Pattern.GetName() + u" ";
    for (int I = 0; I < Pattern.GetSlotCount(); ++I) {
      if (Pattern.GetSlotTestCount(I) == 0) continue;
      String Text = SlotTestsText(Pattern, I, false);
      if (Text.empty()) {
        IFactSlot Slot;
        Template->ContainsSlot(Pattern.GetSlotName(I), Slot);
        Text = Filler(Slot, Symbols, Counter);
      }
      Result += u"(" + Pattern.GetSlotName(I) + u" " + Text + u") ";
    }
    Result = TrimRight(Result) + u")";
  }
  if (Pattern.GetUnique()) Result = u"(unique " + Result + u")";
  if (Pattern.GetExplicit()) Result = u"(explicit " + Result + u")";
  if (Negations == 1) {
    Result = u"(not " + Result + u")";
  } else if (Negations >= 2) {
    Result = u"(exists " + Result + u")";
    for (int I = 2; I < Negations; ++I) Result = u"(not " + Result + u")";
  }
  if (!Pattern.GetBoundName().empty()) Result = u"?" + Pattern.GetBoundName() + u" <- " + Result;
  return CommentLines(Pattern.GetComment()) + Result;
}

String PrettyPrint(const TRule& Rule, TRuleConstruct Half) {
  String Result;
  if (Half == rcPattern) {
    for (int I = 0; I < Rule.GetPatternCount(); ++I) {
      // The companion pattern that the rule adds behind a goal is the
      // rule's own and comes back by itself.
      if (I > 0 && Rule.GetPattern(I - 1)->GetName().starts_with(SBackChainPrefix)) continue;
      // So is the initial-fact pattern in front of a first pattern that
      // cannot start a rule.
      if (I == 0 && Rule.GetPatternCount() > 1 && Rule.GetPattern(0)->GetName() == SInitialFactPattern) {
        const TTavoPattern& Next = *Rule.GetPattern(1);
        const IFactTemplate& Template = Next.GetFactTemplate();
        if (Next.GetNegatedCount() > 0 || Next.GetName() == STestCE || (Template && Template->IsBackwardChaining()))
          continue;
      }
      if (!Result.empty()) Result += CRLF;
      Result += Indent + IndentLines(PrettyPrint(*Rule.GetPattern(I), Rule.GetRuleEngine()), Indent);
    }
  } else {
    const TRuleActionList& Actions = const_cast<TRule&>(Rule).GetActions();
    for (int I = 0; I < Actions.Count(); ++I)
      Result += Indent + IndentLines(PrettyPrint(Actions.Get(I)), Indent) + CRLF;
  }
  return Result;
}

String PrettyPrint(const TRule& Rule, bool Qualify) {
  String Result = u"(defrule " + Qualified(Qualify, Rule.GetModule(), Rule.GetRuleName());
  if (!Rule.GetComment().empty()) Result += CRLF + Indent + Quoted(Rule.GetComment());
  Result += CRLF;
  if (Rule.GetSalience() != 0 || Rule.GetOneShot() || Rule.GetAutoFocus() || !Rule.GetEnabled()) {
    Result += Indent + u"(declare";
    if (Rule.GetSalience() != 0) Result += u" (salience " + IntToStr(Rule.GetSalience()) + u")";
    if (!Rule.GetEnabled()) Result += u" (enabled FALSE)";
    if (Rule.GetAutoFocus()) Result += u" (auto-focus TRUE)";
    if (Rule.GetOneShot()) Result += u" (oneshot TRUE)";
    Result += u")" + CRLF;
  }
  Result += PrettyPrint(Rule, rcPattern);
  Result += CRLF + Indent + u"=>" + CRLF;
  Result += PrettyPrint(Rule, rcAction);
  return TrimRight(Result) + u")";
}

}  // namespace tavo
