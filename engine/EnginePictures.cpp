#include "engine/EnginePictures.h"

#include <algorithm>

#include "common/MekFormat.h"
#include "engine/InferenceEngine.h"
#include "knowledge/TavoRule.h"
#include "matching/ReteNetwork.h"
#include "matching/TavoSlotTest.h"

namespace tavo {

namespace {

const String STestPatternName = u"test";
const String SLineEnd = u"\r\n";

void AppendEscaped(String& Out, StringView Text) {
  static constexpr char16_t Hex[] = u"0123456789ABCDEF";
  for (size_t I = 0; I < Text.size(); ++I) {
    char16_t C = Text[I];
    if (C == u'"' || C == u'\\') {
      Out += u'\\';
      Out += C;
    } else if (C == u'\r' || C == u'\n') {
      // A line break of the text, CR LF as one.
      if (C == u'\r' && I + 1 < Text.size() && Text[I + 1] == u'\n') ++I;
      Out += u"\\n";
    } else if (C == u'&') {
      // dot reads entities in every label: an ampersand stands for itself.
      Out += u"&amp;";
    } else if (C < 0x20 || C == 0x7F) {
      // No picture format takes them raw; their codes stay readable.
      Out += u"\\\\x";
      Out += Hex[C >> 4];
      Out += Hex[C & 15];
    } else {
      Out += C;
    }
  }
}

String Statement(const String& Id, const String& Attributes) { return u"  " + Id + u" [" + Attributes + u"];" + SLineEnd; }

// The pattern of a rule that holds the token position Index: test
// patterns take none.
TTavoPattern* PatternAtToken(const TRule& Rule, int Index) {
  for (int I = 0; I < Rule.GetPatternCount(); ++I) {
    TTavoPattern* Pattern = Rule.GetPattern(I);
    if (Pattern->GetName() == STestPatternName) continue;
    if (Index-- == 0) return Pattern;
  }
  return nullptr;
}

// Whether the rule's patterns use the variable as a multifield variable.
bool IsMultiVariable(const TRule& Rule, StringView Name) {
  for (int I = 0; I < Rule.GetPatternCount(); ++I) {
    TTavoPattern* Pattern = Rule.GetPattern(I);
    for (int S = 0; S < Pattern->GetSlotCount(); ++S)
      for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
        const ITavoValue& Value = Pattern->GetSlotTest(S, T)->GetSlotValue();
        if (Value && Value->GetDType() == dtMultiVariable && Value->GetAsString() == Name) return true;
      }
  }
  return false;
}

// The one slot of an ordered fact has an inner name that no rule shows.
String SlotText(const String& Slot, int SubIndex) {
  String Name = Slot == SDefaultSlotName ? String(u"fields") : Slot;
  return SubIndex == NoSubIndex ? Name : Name + u"[" + IntToStr(SubIndex) + u"]";
}

// Texts of tests: compiled calls read their variables by coordinates,
// which are turned back into the names the rules gave them.
class TTestWriter {
 public:
  // Template: for an alpha node, the template its chain tests, whose fact
  // every coordinate reads, and Slot, where the node's call was written;
  // empty for a join or a test element, whose coordinates are token
  // positions.
  TTestWriter(const std::vector<TRule*>& Rules, String Template = String(), String Slot = String())
      : FRules(Rules), FTemplate(std::move(Template)), FSlot(std::move(Slot)) {}

  // ?name when every rule that holds the node calls the coordinate by one
  // name; otherwise the coordinate itself: <slot> of the alpha node's
  // fact, <k.slot> of the token's k-th fact.
  String Variable(int FactIndex, const String& Slot, int SubIndex) const {
    String Name;
    bool Multi = false;
    bool Known = !FRules.empty();
    for (TRule* Rule : FRules) {
      bool Found = false;
      for (int I = 0; I < Rule->GetBindingCount() && Known; ++I) {
        TBinding* Binding = Rule->GetBinding(I);
        if (Binding->GetSlotIndex() != Slot || Binding->GetSubIndex() != SubIndex) continue;
        if (FTemplate.empty()) {
          if (Binding->GetFactIndex() != FactIndex) continue;
        } else {
          if (!MayHoldCall(PatternAtToken(*Rule, Binding->GetFactIndex()))) continue;
        }
        String Candidate(Binding->GetName());
        if (Found || (!Name.empty() && Name != Candidate)) Known = false;
        Found = true;
        Name = Candidate;
        Multi = Multi || IsMultiVariable(*Rule, Name);
      }
      Known = Known && Found;
    }
    if (Known) return (Multi ? u"$?" : u"?") + Name;
    return u"<" + (FTemplate.empty() ? IntToStr(FactIndex) + u"." : String()) + SlotText(Slot, SubIndex) + u">";
  }

  String Value(const ITavoValue& Value) const {
    if (!Value) return String();
    if (Value->HoldsBindingInfo()) {
      auto* Info = static_cast<TBindingInfo*>(Value->GetAsObject());
      return Variable(Info->GetFactIndex(), Info->GetSlotIndex(), Info->GetSubIndex());
    }
    if (Value->GetDType() == dtFunCall) return Call(*Value->GetAsFunCall());
    if (Value->GetDType() == dtAtom && Value->GetAsAtom().empty()) return u"nil";
    return Value->GetToString();
  }

  String Call(const TFunctionCall& Call) const {
    String Result = u"(" + String(Call.GetName());
    for (int I = 0; I < Call.GetArgumentCount(); ++I)
      if (const ITavoValue& Argument = Call.GetArgument(I)) Result += u" " + Value(Argument);
    return Result + u")";
  }

  // A test of a join or of a test element.
  String Test(const TTavoSlotTest& Test) const {
    bool Negated = Test.GetSlotTestType() == sttNotEquals;
    if (auto* Join = dynamic_cast<const TTavoJoinTest*>(&Test))
      return SlotText(Join->GetRightIndex(), Join->GetRightSubIndex()) + (Negated ? u" <> " : u" = ") +
             Variable(Join->GetTokenIndex(), Join->GetLeftIndex(), Join->GetLeftSubIndex());
    if (auto* Call = dynamic_cast<const TTavoPatternMatchTest*>(&Test))
      return (Negated ? u"not " : u"") + Value(Call->GetSlotValue());
    return Test.ToString();
  }

 private:
  // Whether the alpha node's call can stem from Pattern: one on its
  // template with a call among the tests of the node's slot.
  bool MayHoldCall(const TTavoPattern* Pattern) const {
    if (!Pattern || Pattern->GetName() != FTemplate) return false;
    int Slot = Pattern->IndexOfSlotName(FSlot);
    for (int T = 0; Slot >= 0 && T < Pattern->GetSlotTestCount(Slot); ++T) {
      const ITavoValue& Value = Pattern->GetSlotTest(Slot, T)->GetSlotValue();
      if (Value && Value->GetDType() == dtFunCall) return true;
    }
    return false;
  }

  const std::vector<TRule*>& FRules;
  String FTemplate;
  String FSlot;
};

// The root an alpha node's chain starts from.
const TReteNode* AlphaRoot(const TReteNode* Node) {
  while (Node->GetInDegree() > 0) Node = static_cast<TReteEdge*>(Node->GetInEdge(0))->FromNode();
  return Node;
}

const TReteNode* RightInput(const TReteNode* Node) {
  for (int I = 0; I < Node->GetInDegree(); ++I) {
    auto* Edge = static_cast<TReteEdge*>(Node->GetInEdge(I));
    if (Edge->GetCallType() == ctRight) return Edge->FromNode();
  }
  return nullptr;
}

std::vector<String> AlphaLabel(const TPatternMatchNode& Node, const std::vector<TRule*>& Rules) {
  const TNodeArgsArray& Args = Node.GetArguments();
  auto Arg = [&](size_t I) { return I < Args.size() ? Args[I].ToString() : String(); };
  auto Number = [&](size_t I) { return I < Args.size() && !Args[I].IsName() ? Args[I].GetNumber() : NoSubIndex; };
  const ITavoValue& Value = Node.GetValue();
  String Template;
  if (auto* Root = dynamic_cast<const TPatternMatchNode*>(AlphaRoot(&Node))) Template = Root->GetClassName();
  TTestWriter Writer(Rules, Template, Arg(0));
  switch (TPatternMatchTest Test = Node.GetPatternMatchTest()) {
    case pmtTestClassType:
      return {Writer.Value(Value)};
    case pmtUnknown:
      // The root of test elements: no fact passes it.
      return {(Value ? Writer.Value(Value) + u": " : String()) + u"no facts"};
    case pmtTestEqual:
    case pmtTestNotEqual:
    case pmtTestMultiSlotEqual:
    case pmtTestMultiSlotNotEqual: {
      bool Negated = Test == pmtTestNotEqual || Test == pmtTestMultiSlotNotEqual;
      String Slot = SlotText(Arg(0), Test == pmtTestEqual || Test == pmtTestNotEqual ? NoSubIndex : Number(1));
      if (Value && Value->GetDType() == dtFunCall)
        return {Slot + u": " + (Negated ? u"not " : u"") + Writer.Value(Value)};
      return {Slot + (Negated ? u" <> " : u" = ") + Writer.Value(Value)};
    }
    case pmtTestSlotValueEqual:
    case pmtTestSlotValueNotEqual:
      return {SlotText(Arg(0), Number(2)) + (Test == pmtTestSlotValueEqual ? u" = " : u" <> ") +
              SlotText(Arg(1), Number(3))};
    case pmtTestMultiSlotLength:
      return {SlotText(Arg(0), NoSubIndex) + u": length " + Arg(1)};
    case pmtTestMultiSlotMultiField:
      return {SlotText(Arg(0), NoSubIndex) + u": spans from item " + Arg(1)};
    case pmtFailTest:
      return {u"never passes"};
  }
  return {Node.ToString()};
}

}  // namespace

String DotLabel(const std::vector<String>& Lines) {
  String Result = u"\"";
  for (size_t I = 0; I < Lines.size(); ++I) {
    if (I > 0) Result += u"\\n";
    AppendEscaped(Result, Lines[I]);
  }
  return Result + u"\"";
}

// TNetworkPicture

TNetworkPicture::TNetworkPicture(const TReteNetwork& Network, std::vector<TRule*> Rules, String Title)
    : FNetwork(Network), FRules(std::move(Rules)), FTitle(std::move(Title)) {
  std::vector<TReteNode*> Stack;
  auto Walk = [&](TReteNode* Start) {
    Stack.push_back(Start);
    while (!Stack.empty()) {
      TReteNode* Node = Stack.back();
      Stack.pop_back();
      if (!FIds.emplace(Node, int(FOrder.size()) + 1).second) continue;
      FOrder.push_back(Node);
      for (int I = Node->GetEdgeCount(); I-- > 0;) Stack.push_back(static_cast<TReteEdge*>(Node->GetEdge(I))->ToNode());
    }
  };
  for (int I = 0; I < Network.GetRootCount(); ++I) Walk(Network.GetRoot(I));
  // Every node hangs under a root; any other is drawn all the same.
  for (int I = 0; I < Network.GetNodeCount(); ++I) Walk(static_cast<TReteNode*>(Network.GetNode(I)));
  for (TRule* Rule : FRules)
    if (const std::vector<TReteNode*>* Nodes = Network.GetRuleNodes(Rule))
      for (TReteNode* Node : *Nodes) {
        std::vector<TRule*>& Holders = FHolders[Node];
        if (Holders.empty() || Holders.back() != Rule) Holders.push_back(Rule);
      }
}

const std::vector<TRule*>& TNetworkPicture::HoldersOf(const TReteNode* Node) const {
  static const std::vector<TRule*> None;
  auto Found = FHolders.find(Node);
  return Found == FHolders.end() ? None : Found->second;
}

TNetworkPicture::TNodeKind TNetworkPicture::KindOf(const TReteNode* Node) const {
  if (dynamic_cast<const TPatternMatchTerminalNode*>(Node)) return nkRule;
  if (auto* Join = dynamic_cast<const TJoinNode*>(Node)) {
    if (!Join->GetNegatedPattern()) return nkJoin;
    // Each bare negated join on top of another negates it once more: the
    // second of a chain passes what exists, the third what does not.
    int Depth = 1;
    for (const TReteNode* Input = RightInput(Join); Input; Input = RightInput(Input)) {
      auto* Below = dynamic_cast<const TJoinNode*>(Input);
      if (!Below || !Below->GetNegatedPattern()) break;
      ++Depth;
    }
    return Depth % 2 ? nkNot : nkExists;
  }
  if (dynamic_cast<const TTestNode*>(Node)) return nkTest;
  if (dynamic_cast<const TPatternMatchNode*>(Node)) return nkAlpha;
  return nkOther;
}

std::vector<String> TNetworkPicture::LabelOf(const TReteNode* Node, TNodeKind Kind) const {
  const std::vector<TRule*>& Holders = HoldersOf(Node);
  std::vector<String> Lines;
  switch (Kind) {
    case nkAlpha:
      Lines = AlphaLabel(*static_cast<const TPatternMatchNode*>(Node), Holders);
      break;
    case nkJoin:
    case nkNot:
    case nkExists:
    case nkTest: {
      auto* Tests = static_cast<const TTestNode*>(Node);
      auto* Join = dynamic_cast<const TJoinNode*>(Node);
      Lines.push_back(Kind == nkJoin ? u"join" : Kind == nkNot ? u"not" : Kind == nkExists ? u"exists" : u"test");
      if (Join && Join->GetUnique()) Lines.back() += u" (unique)";
      TTestWriter Writer(Holders);
      for (int I = 0; I < Tests->GetTestCount(); ++I) Lines.push_back(Writer.Test(*Tests->GetTest(I)));
      if (Join && Join->GetPattern()) Lines.push_back(u"asks for goals");
      if (Join && Join->GetGuardCount() > 0) Lines.push_back(u"checks the test below first");
      break;
    }
    case nkRule: {
      TRule* Rule = static_cast<const TPatternMatchTerminalNode*>(Node)->GetRule();
      Lines.push_back(Rule ? Rule->GetRuleName() : String());
      break;
    }
    case nkOther:
      Lines.push_back(Node->ToString());
      break;
  }
  if (Holders.size() > 1) Lines.push_back(u"shared by " + IntToStr(int(Holders.size())) + u" rules");
  return Lines;
}

String TNetworkPicture::ToString() const {
  static const char16_t* const Prefixes[] = {u"alpha", u"join", u"not", u"exists", u"test", u"rule", u"node"};
  static const char16_t* const Shapes[] = {u"shape=ellipse", u"shape=box", u"shape=box, style=dashed",
                                           u"shape=box, style=dashed", u"shape=hexagon", u"shape=doubleoctagon",
                                           u"shape=box"};
  std::vector<String> Names(FOrder.size());
  String Result = u"digraph rete {" + SLineEnd + u"  label=" + DotLabel({FTitle}) + u";" + SLineEnd +
                  u"  labelloc=t;" + SLineEnd;
  for (size_t I = 0; I < FOrder.size(); ++I) {
    const TReteNode* Node = FOrder[I];
    TNodeKind Kind = KindOf(Node);
    Names[I] = Prefixes[Kind] + IntToStr(int(I) + 1);
    String Attributes = Shapes[Kind];
    if (Kind == nkAlpha && Node->GetInDegree() == 0) Attributes += u", style=bold";
    if (HoldersOf(Node).size() > 1) Attributes += u", penwidth=2";
    Result += Statement(Names[I], Attributes + u", label=" + DotLabel(LabelOf(Node, Kind)));
  }
  for (size_t I = 0; I < FOrder.size(); ++I) {
    const TReteNode* Node = FOrder[I];
    for (int E = 0; E < Node->GetEdgeCount(); ++E) {
      auto* Edge = static_cast<TReteEdge*>(Node->GetEdge(E));
      auto Target = FIds.find(Edge->ToNode());
      if (Target == FIds.end()) continue;
      Result += u"  " + Names[I] + u" -> " + Names[size_t(Target->second - 1)];
      if (Edge->GetCallType() == ctLeft) Result += u" [label=\"left\"]";
      if (Edge->GetCallType() == ctRight) Result += u" [label=\"right\"]";
      Result += u";" + SLineEnd;
    }
  }
  return Result + u"}" + SLineEnd;
}

// TAgendaPicture

String TAgendaPicture::ToString() const {
  String Result = u"digraph agenda {" + SLineEnd + u"  label=\"Agendas and focus stack\";" + SLineEnd +
                  u"  labelloc=t;" + SLineEnd + u"  node [shape=box];" + SLineEnd;
  const TModules& Focus = FEngine.GetFocusStack();
  const TModules& Modules = FEngine.GetModules();
  Result += u"  subgraph cluster_focus {" + SLineEnd + u"  label=\"focus stack, top first\";" + SLineEnd;
  if (Focus.Count() == 0) Result += Statement(u"focus0", u"shape=plaintext, label=\"empty\"");
  for (int I = 0; I < Focus.Count(); ++I) {
    Result += Statement(u"focus" + IntToStr(I + 1), u"label=" + DotLabel({Focus.Get(I)->GetName()}));
    // Keeps the stack upright.
    if (I > 0) Result += u"  focus" + IntToStr(I) + u" -> focus" + IntToStr(I + 1) + u" [style=invis];" + SLineEnd;
  }
  Result += u"  }" + SLineEnd;
  // The first node of each module's agenda, which the focus points at.
  std::vector<String> Heads;
  for (int M = 0; M < Modules.Count(); ++M) {
    TModule* Module = Modules.Get(M).Get();
    bool Current = Module == FEngine.GetCurrentModule().Get();
    String Prefix = u"module" + IntToStr(M + 1) + u"_";
    Result += u"  subgraph cluster_module" + IntToStr(M + 1) + u" {" + SLineEnd + u"  label=" +
              DotLabel({Module->GetName() + (Current ? u" (current)" : u"")}) + u";" + SLineEnd;
    TActivationAgenda* Agenda = Current ? FEngine.GetAgenda() : Module->GetAgenda();
    TFacts* Facts = Current ? FEngine.GetFacts() : Module->GetFacts();
    int Count = Agenda ? Agenda->Count() : 0;
    if (Count == 0) {
      Heads.push_back(Prefix + u"empty");
      Result += Statement(Heads.back(), u"shape=plaintext, label=\"no activations\"");
    } else {
      Heads.push_back(Prefix + u"1");
    }
    for (int I = 0; I < Count; ++I) {
      TActivation* Activation = Agenda->GetActivations(I);
      std::vector<String> Lines{IntToStr(I + 1) + u". " +
                                    (Activation->GetRule() ? Activation->GetRule()->GetRuleName() : String()),
                                u"salience " + IntToStr(Agenda->GetSalience(I))};
      const IReteToken& Token = Activation->GetToken();
      for (int F = 0; Token && F < Token->GetCount(); ++F) {
        TFact* Fact = Token->GetFacts(F);
        // A negated pattern's place holds the null fact, which is no fact.
        if (!Fact || Fact == Module->GetNullFact().Get() || Fact == FEngine.GetNullFact().Get()) continue;
        // The fact as the module holds it: a multifield variable's span
        // is a copy with the span in one item.
        IFact Held = Facts ? Facts->GetFactByID(Fact->GetID()) : IFact();
        Lines.push_back(u"f-" + IntToStr(Fact->GetID()) + u" " + (Held ? Held->ToString() : Fact->ToString()));
      }
      if (Activation->GetStrength() != 1.0f)
        Lines.push_back(u"strength " + Format(u"%.4f", double(Activation->GetStrength())));
      Result += Statement(Prefix + IntToStr(I + 1), u"style=rounded, label=" + DotLabel(Lines));
      if (I > 0) Result += u"  " + Prefix + IntToStr(I) + u" -> " + Prefix + IntToStr(I + 1) + u";" + SLineEnd;
    }
    Result += u"  }" + SLineEnd;
  }
  for (int I = 0; I < Focus.Count(); ++I) {
    int M = Modules.IndexOf(Focus.Get(I));
    if (M >= 0) Result += u"  focus" + IntToStr(I + 1) + u" -> " + Heads[size_t(M)] + u" [style=dashed];" + SLineEnd;
  }
  return Result + u"}" + SLineEnd;
}

// The engine's pictures

String TInferenceEngine::GetNetworkPicture() const {
  std::vector<TRule*> Rules;
  for (int I = 0; FRules && I < FRules->Count(); ++I) Rules.push_back(FRules->Get(I));
  String Module = FCurrentModule ? FCurrentModule->GetName() : String();
  String Title = u"Rete network of module " + Module;
  if (!FRete) {
    TReteNetwork None;
    return TNetworkPicture(None, {}, Title).ToString();
  }
  return TNetworkPicture(*FRete, std::move(Rules), Title).ToString();
}

String TInferenceEngine::GetAgendaPicture() const { return TAgendaPicture(*this).ToString(); }

}  // namespace tavo
