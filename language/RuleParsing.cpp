// defrule: the rule's header and declarations, its conditional elements
// with every constraint turned into a test the moment it is read, and its
// actions. The rule completes each pattern as it is added (bindings,
// rewriting of "|"), and the engine's rule list compiles it.
#include <memory>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"

namespace tavo {

namespace {

constexpr int KindOpen = u'(';
constexpr int KindClose = u')';
constexpr int KindEquals = u'=';
constexpr int KindTilde = u'~';
constexpr int KindAnd = u'&';
constexpr int KindOr = u'|';

bool IsVariableKind(int Kind) { return Kind == dtVariable || Kind == dtMultiVariable; }

}  // namespace

TRule* TTavoClipsParser::ParseRule() {
  const StringView Where = u"ParseRule";
  String Name, Module, Comment;
  IStreamToken Token = ParseHeader(Name, Module, Comment, true, Where, SExpectedDefRule, u"defrule");
  std::unique_ptr<TRule> Rule(new TRule(FOwner, Name, String()));
  Rule->SetModule(Module);
  Rule->BeginUpdate();
  Rule->SetRuleName(Name);
  Rule->SetComment(Comment);
  if (Token->GetDataType() == KindOpen) {
    IStreamToken Head = Next();
    if (Head->GetDataType() == dtAtom && Head->GetText() == u"declare") {
      Token = ParseRuleDeclarations(*Rule, Next());
    } else {
      PutBack(Head);
    }
  }
  TVariableTable Table;
  PutBack(Token);
  ParseRulePatterns(Rule.get(), Table);
  IStreamToken Equals = Next();
  IStreamToken Greater = Next();
  if (Equals->GetDataType() != KindEquals || Greater->GetDataType() != dtAtom || Greater->GetText() != u">")
    ParseError(Where, SExpectedEqGT);
  ParseRuleActions(Rule.get(), Table);
  if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (OnParseRule) OnParseRule(this, Rule.get());
  Rule->EndUpdate();
  return Rule.release();
}

IStreamToken TTavoClipsParser::ParseRuleDeclarations(TRule& Rule, IStreamToken Token) {
  const StringView Where = u"ParseRule";
  while (Token->GetDataType() == KindOpen) {
    IStreamToken Property = Next();
    const String& Text = Property->GetText();
    if (Property->GetDataType() != dtAtom ||
        (Text != u"salience" && Text != u"auto-focus" && Text != u"oneshot" && Text != u"enabled"))
      ParseError(Where, SExpectedRuleProperty);
    IStreamToken Value = Next();
    if (Text == u"salience") {
      if (Value->GetDataType() == dtInteger || Value->GetDataType() == dtVariable) {
        Rule.SetSalience(Value->Value());
      } else if (Value->GetDataType() == KindOpen) {
        // Kept unevaluated: salience may be evaluated again later.
        PutBack(Value);
        Rule.SetSalience(Make<TTavoValue>(ParseFunCall()));
      } else {
        ParseError(Where, SExpectedIntVarFun, u"salience");
      }
    } else {
      bool Flag;
      if (Value->GetDataType() == KindOpen) {
        // Run now, at parse time.
        PutBack(Value);
        ITavoValue Result = ParseNExecuteFunCall();
        Flag = Result && Result->Equals(FCTrue);
      } else {
        ITavoValue Read = Value->Value();
        Flag = Read && Read->Equals(FCTrue);
      }
      if (Text == u"oneshot")
        Rule.SetOneShot(Flag);
      else if (Text == u"auto-focus")
        Rule.SetAutoFocus(Flag);
      else
        Rule.SetEnabled(Flag);
    }
    if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
    Token = Next();
  }
  if (Token->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  return Next();
}

void TTavoClipsParser::ParseRulePatterns(TRule* Rule, TVariableTable& Table) {
  const StringView Where = u"ParseRulePatterns";
  IStreamToken Token = Next();
  while (Token->GetDataType() == KindOpen || Token->GetDataType() == dtVariable) {
    String BoundName;
    if (Token->GetDataType() == dtVariable) {
      BoundName = Token->GetText();
      IStreamToken Arrow = Next();
      if (Arrow->GetDataType() != dtAtom || Arrow->GetText() != u"<-") ParseError(Where, SExpectedAssignment);
    } else {
      PutBack(Token);
    }
    std::unique_ptr<TTavoPattern> Pattern(ParsePattern(0, Table));
    // A test has the count 0, so it may be bound, whatever the message says.
    if (!BoundName.empty() && Pattern->GetNegatedCount() != 0) ParseError(Where, SInvalidTestBinding);
    Pattern->SetBoundName(BoundName);
    Rule->GetPatterns().Add(Pattern.release());
    Token = Next();
  }
  PutBack(Token);
}

TTavoPattern* TTavoClipsParser::ParsePattern(int Level, TVariableTable& Table) {
  const StringView Where = u"ParsePattern";
  IStreamToken Open = Next();
  IStreamToken Head = Next();
  if (Open->GetDataType() != KindOpen || Head->GetDataType() != dtAtom) ParseError(Where, SExpectedAtom);
  const String Comment = Trim(Open->GetWhitespace());
  const String& Name = Head->GetText();
  std::unique_ptr<TTavoPattern> Pattern;
  auto Close = [&] {
    if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  };
  if (Name == u"not") {
    Pattern.reset(ParsePattern(Level + 1, Table));
    Close();
  } else if (Name == u"exists") {
    // A double negation, and nothing else.
    Pattern.reset(ParsePattern(Level + 2, Table));
    Close();
  } else if (Name == u"unique") {
    Pattern.reset(ParsePattern(Level, Table));
    Close();
    Pattern->SetUnique(true);
  } else if (Name == u"explicit") {
    Pattern.reset(ParsePattern(Level, Table));
    Close();
    Pattern->SetExplicit(true);
  } else if (Name == STestCE) {
    // Negations around a test fold into its one test's flag.
    IFactTemplate Template = FOwner ? FOwner->CreateFactTemplate(STestCE) : nullptr;
    Pattern = std::make_unique<TTavoPattern>(nullptr, STestCE, Template, 0);
    ITavoValue Call = Make<TTavoValue>(ParseFunCall());
    TTavoPatternMatchTest* Test = Pattern->CreatePatternMatchTest(nullptr, Level % 2 ? sttNotEquals : sttEquals,
                                                                  NoSubIndex, Call);
    Pattern->AddTest(SDefaultSlotName, Test);
    Close();
  } else {
    if (!FOwner) throw ETavoException(SUnknownEngine);
    // An unknown name makes an implied ordered template, which stays.
    IFactTemplate Template = FOwner->CreateFactTemplate(Name);
    const bool Ordered = Template->IndexOfSlot(SDefaultSlotName) >= 0;
    Pattern = std::make_unique<TTavoPattern>(nullptr, Name, Template, Level);
    IStreamToken Token = Next();
    while (Ordered || Token->GetDataType() == KindOpen) {
      String SlotName = SDefaultSlotName;
      if (!Ordered) {
        IStreamToken SlotToken = Next();
        if (SlotToken->GetDataType() != dtAtom) ParseError(Where, SBadSlotName, SlotToken->ToString());
        SlotName = SlotToken->GetText();
        Token = Next();
      }
      ParseSlotConstraints(*Pattern, SlotName, Ordered, Token, Table);
      if (Ordered) break;
      // The token after a slot is not checked: a ")" ends the pattern, and
      // anything else in its place is swallowed with it.
      Token = Next();
    }
    if (OnParsePattern) OnParsePattern(this, Pattern.get());
  }
  Pattern->SetComment(Comment);
  return Pattern.release();
}

void TTavoClipsParser::ParseSlotConstraints(TTavoPattern& Pattern, const String& SlotName, bool Ordered,
                                            IStreamToken Token, TVariableTable& Table) {
  const StringView Where = u"ParsePattern";
  const IFactSlot& Slot = Pattern.GetFactTemplate()->GetSlot(SlotName);
  const bool IsMulti = Slot->IsMulti();
  const bool IsFuzzy = Slot->IsFuzzy();
  int SubIndex = IsMulti ? 0 : NoSubIndex;
  bool Conjunction = true;
  (void)Ordered;
  while (Token->GetDataType() != KindClose) {
    bool Negated = Token->GetDataType() == KindTilde;
    if (Negated) Token = Next();
    const int Kind = Token->GetDataType();
    if (IsFuzzy && !IsVariableKind(Kind) && !(Kind == dtAtom && Token->GetText() == u":")) {
      // The rest of the slot is one fuzzy value: a term, a hedged
      // expression, points; built here, as the rule is read.
      PutBack(Token);
      ITavoValue Value = ParseFuzzyValue(Slot->GetFuzzyVariable(), Where, SNeedFuzzyType);
      Pattern.AddTest(SlotName, Value, SubIndex, Conjunction, Negated);
      Token = Next();
      continue;
    }
    if (Kind == dtFloat || Kind == dtString || Kind == dtInteger) {
      Pattern.AddTest(SlotName, Token->Value(), SubIndex, Conjunction, Negated);
    } else if (Kind == dtAtom && Token->GetText() == u":") {
      Pattern.AddTest(SlotName, Make<TTavoValue>(ParseFunCall()), SubIndex, Conjunction, Negated);
    } else if (Kind == dtAtom) {
      Pattern.AddTest(SlotName, Token->Value(), SubIndex, Conjunction, Negated);
    } else if (IsVariableKind(Kind)) {
      // The first appearance of a name fixes its kind for the left side.
      if (const int* Known = Table.Find(Token->GetText()))
        Token->SetDataType(*Known);
      else
        Table.AddOrSetValue(Token->GetText(), Kind);
      Pattern.AddTest(SlotName, Token->Value(), SubIndex, Conjunction, Negated);
    } else if (Kind == KindEquals) {
      // A return value needs a variable to bind the field to.
      IFunCall Expression = ParseFunCall();
      IFunCall EqStar = Make<TFunctionCall>(static_cast<IReasoner*>(FOwner), u"eq*");
      ITavoValue Variable = Make<TTavoValue>(GenerateSymbol(SEqStarPrefix), IsMulti ? dtMultiVariable : dtVariable);
      Pattern.AddTest(SlotName, Variable, SubIndex, Conjunction, false);
      EqStar->AddArgument(Variable->CloneValue());
      EqStar->AddArgument(Make<TTavoValue>(Expression));
      Pattern.AddTest(SlotName, Make<TTavoValue>(EqStar), SubIndex, Conjunction, Negated);
    } else {
      ParseError(Where, SBadSlotValue, Token->ToString());
    }
    Token = Next();
    if (Token->GetDataType() == KindAnd) {
      Token = Next();
    } else if (Token->GetDataType() == KindOr) {
      Conjunction = false;
      Token = Next();
    } else {
      if (!IsMulti && Token->GetDataType() != KindClose) ParseError(Where, SNotMultiSlot, SlotName);
      ++SubIndex;
      Conjunction = true;
    }
  }
  if (IsMulti) Pattern.SetSlotLength(Pattern.IndexOfSlotName(SlotName), SubIndex);
}

void TTavoClipsParser::ParseRuleActions(TRule* Rule, TVariableTable& /*Table*/) {
  IStreamToken Token = Next();
  while (Token->GetDataType() == KindOpen) {
    PutBack(Token);
    Rule->GetActions().Add(ParseFunCall());
    Token = Next();
  }
  PutBack(Token);
}

}  // namespace tavo
