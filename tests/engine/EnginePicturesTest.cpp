// Pictures of the network and of the agendas as dot text: the kinds of
// nodes, sharing, negations, the texts of tests, escaping, and the agendas
// in firing order with the focus stack.
#include <gtest/gtest.h>

#include <map>

#include "engine/EnginePictures.h"
#include "engine/InferenceEngine.h"

namespace tavo {
namespace {

std::vector<String> Lines(const String& Text) {
  std::vector<String> Result;
  for (size_t Start = 0; Start < Text.size();) {
    size_t End = Text.find(u"\r\n", Start);
    if (End == String::npos) End = Text.size();
    Result.push_back(Text.substr(Start, End - Start));
    Start = End + 2;
  }
  return Result;
}

// The statements of a picture: each node's attributes by its id, and the
// edges as "from -> to [attributes]" in the order they stand.
struct TPicture {
  explicit TPicture(const String& Text) {
    for (const String& Line : Lines(Text)) {
      if (Line.size() < 3 || Line.substr(0, 2) != u"  " || Line[2] == u' ') continue;
      size_t Arrow = Line.find(u" -> ");
      size_t Bracket = Line.find(u" [");
      if (Arrow != String::npos && (Bracket == String::npos || Arrow < Bracket)) {
        Edges.push_back(Line.substr(2, Line.size() - 3));
      } else if (Bracket != String::npos && Line.back() == u';' && Line.substr(2, 5) != u"node ") {
        String Id = Line.substr(2, Bracket - 2);
        Nodes[Id] = Line.substr(Bracket + 2, Line.size() - Bracket - 4);
        Order.push_back(Id);
      }
    }
  }
  int Count(const String& Prefix) const {
    int Result = 0;
    for (auto& [Id, Attributes] : Nodes)
      if (Id.rfind(Prefix, 0) == 0 && Id.find_first_not_of(u"0123456789", Prefix.size()) == String::npos) ++Result;
    return Result;
  }
  // The id of the one node whose attributes hold Part.
  String Find(const String& Part) const {
    String Found;
    for (auto& [Id, Attributes] : Nodes)
      if (Attributes.find(Part) != String::npos) {
        EXPECT_TRUE(Found.empty()) << "two nodes hold " << StringToUtf8(Part);
        Found = Id;
      }
    EXPECT_FALSE(Found.empty()) << "no node holds " << StringToUtf8(Part);
    return Found;
  }
  std::vector<String> EdgesFrom(const String& Id) const {
    std::vector<String> Result;
    for (const String& Edge : Edges)
      if (Edge.rfind(Id + u" -> ", 0) == 0) Result.push_back(Edge.substr(Id.size() + 4));
    return Result;
  }
  std::map<String, String> Nodes;
  std::vector<String> Order;
  std::vector<String> Edges;
};

const char16_t* const Pets =
    u"(deftemplate person (slot name) (slot age))"
    u"(deftemplate pet (slot owner) (slot kind))"
    u"(defrule dog-owner (person (name ?n)) (pet (owner ?n) (kind dog)) (test (neq ?n \"Zoë\")) =>)"
    u"(defrule no-pet (declare (salience 10)) (person (name ?n)) (not (pet (owner ?n))) =>)";

TEST(TNetworkPictureTest, SharedPatternsNegationsTestsAndRulesEachShowAsTheirKind) {
  TInferenceEngine Engine;
  Engine.Parse(Pets);
  String Text = Engine.GetNetworkPicture();
  TPicture Picture(Text);
  EXPECT_EQ(Lines(Text).front(), u"digraph rete {");
  EXPECT_EQ(Picture.Count(u"alpha"), 4) << "person, pet, kind = dog, the root of test elements";
  EXPECT_EQ(Picture.Count(u"join"), 1);
  EXPECT_EQ(Picture.Count(u"not"), 1);
  EXPECT_EQ(Picture.Count(u"test"), 1);
  EXPECT_EQ(Picture.Count(u"rule"), 2);
  EXPECT_EQ(Picture.Count(u"exists"), 0);
  EXPECT_EQ(Picture.Nodes.size(), 9u);
  // Numbered by a walk from the roots, the first root first.
  EXPECT_EQ(Picture.Order.front(), u"alpha1");
  for (size_t I = 0; I < Picture.Order.size(); ++I)
    EXPECT_TRUE(Picture.Order[I].ends_with(IntToStr(int(I) + 1))) << StringToUtf8(Picture.Order[I]);

  // The person pattern is one node with an edge to each rule's join.
  String Person = Picture.Find(u"label=\"person\\nshared by 2 rules\"");
  EXPECT_NE(Picture.Nodes[Person].find(u"penwidth=2"), String::npos);
  String Join = Picture.Find(u"label=\"join\\nowner = ?n\"");
  String Not = Picture.Find(u"label=\"not\\nowner = ?n\"");
  EXPECT_EQ(Picture.EdgesFrom(Person),
            (std::vector<String>{Join + u" [label=\"left\"]", Not + u" [label=\"left\"]"}));
  EXPECT_EQ(Picture.Nodes[Not].substr(0, 23), u"shape=box, style=dashed");
  EXPECT_EQ(Picture.Nodes[Join].substr(0, 11), u"shape=box, ");
  String Pet = Picture.Find(u"label=\"pet\\nshared by 2 rules\"");
  String Dog = Picture.Find(u"label=\"kind = dog\"");
  EXPECT_EQ(Picture.EdgesFrom(Pet), (std::vector<String>{Dog, Not + u" [label=\"right\"]"}));
  EXPECT_EQ(Picture.EdgesFrom(Dog), (std::vector<String>{Join + u" [label=\"right\"]"}));

  // The test element hangs on the join, fed by the root that passes no fact.
  String Test = Picture.Find(u"shape=hexagon, label=\"test\\n(neq ?n \\\"Zoë\\\")\"");
  String TestRoot = Picture.Find(u"label=\"test: no facts\"");
  EXPECT_EQ(Picture.EdgesFrom(Join), (std::vector<String>{Test + u" [label=\"left\"]"}));
  EXPECT_EQ(Picture.EdgesFrom(TestRoot), (std::vector<String>{Test + u" [label=\"right\"]"}));
  EXPECT_EQ(Picture.EdgesFrom(Test), (std::vector<String>{Picture.Find(u"label=\"dog-owner\"")}));
  EXPECT_EQ(Picture.EdgesFrom(Not), (std::vector<String>{Picture.Find(u"shape=doubleoctagon, label=\"no-pet\"")}));
  for (const String& Edge : Picture.Edges) {
    String To = Edge.substr(Edge.find(u" -> ") + 4);
    To = To.substr(0, To.find(u' '));
    EXPECT_TRUE(Picture.Nodes.count(To)) << StringToUtf8(Edge);
  }

  // Another engine with the same rules draws the same text.
  TInferenceEngine Other;
  Other.Parse(u"(deftemplate unrelated (slot x))");
  Other.Parse(Pets);
  EXPECT_EQ(Other.GetNetworkPicture(), Text);
  EXPECT_EQ(Engine.GetNetworkPicture(), Text);
}

TEST(TNetworkPictureTest, NegationsAlternateUpAChainAndVariablesNamedTwoWaysStayCoordinates) {
  TInferenceEngine Engine;
  Engine.Parse(
      u"(deftemplate item (slot size) (multislot tags))"
      u"(defrule big (item (size ?s&:(> ?s 10))) =>)"
      u"(defrule large (item (size ?z&:(> ?z 10))) (unique (item (tags $?t red))) =>)"
      u"(defrule twice-a (item (size ?a)) (item (size ?a)) =>)"
      u"(defrule twice-b (item (size ?b)) (item (size ?b)) =>)"
      u"(defrule none (item (size ?x)) (not (exists (item (size ?x)))) =>)"
      u"(defrule colour (value red ?c) =>)"
      u"(defrule pair (item (size ?p&:(> ?p 99))) (item (size ?q)) =>)");
  TPicture Picture(Engine.GetNetworkPicture());
  // Two names for one coordinate: the coordinate itself.
  Picture.Find(u"label=\"size: (> <size> 10)\\nshared by 2 rules\"");
  Picture.Find(u"label=\"join\\nsize = <0.size>\\nshared by 2 rules\"");
  Picture.Find(u"label=\"join (unique)\"");
  // Another pattern of the rule on the template binds the slot too, but
  // has no call there.
  Picture.Find(u"label=\"size: (> ?p 99)\"");
  Picture.Find(u"label=\"tags: length 2\"");
  Picture.Find(u"label=\"tags: spans from item 0\"");
  // The slot of an ordered fact goes by no name of its own.
  Picture.Find(u"label=\"fields: length 2\"");
  Picture.Find(u"label=\"fields[0] = red\"");
  // (not (exists p)): a negated join with the test, then a bare one that
  // passes what exists, then one that passes what does not.
  EXPECT_EQ(Picture.Count(u"not"), 2);
  EXPECT_EQ(Picture.Count(u"exists"), 1);
  String First = Picture.Find(u"label=\"not\\nsize = ?x\"");
  String Exists = Picture.Find(u"label=\"exists\"");
  String Last = Picture.Find(u"style=dashed, label=\"not\"");
  EXPECT_EQ(Picture.EdgesFrom(First), (std::vector<String>{Exists + u" [label=\"right\"]"}));
  EXPECT_EQ(Picture.EdgesFrom(Exists), (std::vector<String>{Last + u" [label=\"right\"]"}));
  EXPECT_EQ(Picture.EdgesFrom(Last), (std::vector<String>{Picture.Find(u"label=\"none\"")}));
}

TEST(TNetworkPictureTest, ANegationThatChecksALaterTestSaysSo) {
  TInferenceEngine Engine;
  Engine.Parse(
      u"(deftemplate person (slot name) (slot age)) (deftemplate pet (slot owner))"
      u"(defrule old-without-pet (person (name ?n) (age ?a)) (not (pet (owner ?n))) (test (> ?a 70)) =>)");
  TPicture Picture(Engine.GetNetworkPicture());
  String Not = Picture.Find(u"label=\"not\\nowner = ?n\\nchecks the test below first\"");
  EXPECT_EQ(Picture.EdgesFrom(Not), (std::vector<String>{Picture.Find(u"label=\"test\\n(> ?a 70)\"") + u" [label=\"left\"]"}));
}

TEST(TNetworkPictureTest, AnEmptyNetworkIsAGraphWithoutNodes) {
  TInferenceEngine Engine;
  EXPECT_EQ(Engine.GetNetworkPicture(),
            u"digraph rete {\r\n  label=\"Rete network of module MAIN\";\r\n  labelloc=t;\r\n}\r\n");
}

TEST(TDotLabelTest, QuotesBackslashesBreaksAmpersandsAndControlsAreEscaped) {
  EXPECT_EQ(DotLabel({u"say \"hi\" \\ now", u"two\r\nlines\nand & <tags>\x01 Zoë"}),
            u"\"say \\\"hi\\\" \\\\ now\\ntwo\\nlines\\nand &amp; <tags>\\\\x01 Zoë\"");
  EXPECT_EQ(DotLabel({}), u"\"\"");
  EXPECT_EQ(StringToUtf8(DotLabel({u"é"})), "\"\xC3\xA9\"");
}

TEST(TAgendaPictureTest, ActivationsStandInFiringOrderWithSaliencesFactsAndTheFocusStack) {
  TInferenceEngine Engine;
  Engine.Parse(
      u"(deftemplate job (slot n))"
      u"(deffacts jobs (job (n 1)) (job (n 2)))"
      u"(defrule low (job (n ?n)) =>)"
      u"(defrule high (declare (salience 20)) (job (n 2)) =>)"
      u"(defrule quiet (declare (salience -5)) (job (n 1)) (not (job (n 3))) =>)"
      u"(defmodule SECOND)");
  Engine.Reset();
  Engine.PushFocus(u"SECOND");
  TPicture Picture(Engine.GetAgendaPicture());
  // MAIN's agenda, in firing order; the negated pattern's place shows no fact.
  EXPECT_EQ(Picture.Nodes[u"module1_1"], u"style=rounded, label=\"1. high\\nsalience 20\\nf-1 (job (n 2))\"");
  EXPECT_EQ(Picture.Nodes[u"module1_2"], u"style=rounded, label=\"2. low\\nsalience 0\\nf-1 (job (n 2))\"");
  EXPECT_EQ(Picture.Nodes[u"module1_3"], u"style=rounded, label=\"3. low\\nsalience 0\\nf-0 (job (n 1))\"");
  EXPECT_EQ(Picture.Nodes[u"module1_4"], u"style=rounded, label=\"4. quiet\\nsalience -5\\nf-0 (job (n 1))\"");
  EXPECT_EQ(Picture.Count(u"module1_"), 4);
  EXPECT_EQ(Picture.Nodes[u"module2_empty"], u"shape=plaintext, label=\"no activations\"");
  // The focus stack, top first, each entry pointing at its module's agenda.
  EXPECT_EQ(Picture.Nodes[u"focus1"], u"label=\"SECOND\"");
  EXPECT_EQ(Picture.Nodes[u"focus2"], u"label=\"MAIN\"");
  EXPECT_EQ(Picture.Edges, (std::vector<String>{u"focus1 -> focus2 [style=invis]", u"module1_1 -> module1_2",
                                                u"module1_2 -> module1_3", u"module1_3 -> module1_4",
                                                u"focus1 -> module2_empty [style=dashed]",
                                                u"focus2 -> module1_1 [style=dashed]"}));
}

}  // namespace
}  // namespace tavo
