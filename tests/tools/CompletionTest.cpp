#include "tools/Completion.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

const std::vector<std::string> Names = {"deftemplate", "deffacts",  "deffunction", "defrule", "str-cat",
                                        "str-index",   "str-length", "<=",         "<>",      "create$",
                                        "run",         "str-cat"};

TEST(Completion, WordEndsAtTheCursorAndStartsAfterASeparator) {
  EXPECT_EQ(WordBefore("(deftem", 7), "deftem");
  EXPECT_EQ(WordBefore("(deftem", 4), "def");
  EXPECT_EQ(WordBefore("(printout t (str-c", 18), "str-c");
  EXPECT_EQ(WordBefore("  run", 5), "run");
  EXPECT_EQ(WordBefore("(if (<", 6), "<");
  EXPECT_EQ(WordBefore("?x&~re", 6), "re");
  EXPECT_EQ(WordBefore("(bind ?x (create", 16), "create");
  EXPECT_EQ(WordBefore("\"a (str", 7), "str");
  // Nothing before the cursor, or a separator just before it.
  EXPECT_EQ(WordBefore("(run)", 0), "");
  EXPECT_EQ(WordBefore("(run ", 5), "");
  EXPECT_EQ(WordBefore("(", 1), "");
  EXPECT_EQ(WordBefore("run", 99), "run");
}

TEST(Completion, OneNameCompletesWithABlank) {
  TCompletion C = Complete("deftem", Names);
  EXPECT_EQ(C.Insert, "plate ");
  EXPECT_EQ(C.Matches, std::vector<std::string>{"deftemplate"});
  // A whole name only gains the blank.
  EXPECT_EQ(Complete("run", Names).Insert, " ");
  EXPECT_EQ(Complete("create", Names).Insert, "$ ");
}

TEST(Completion, SeveralNamesCompleteAsFarAsTheyAgree) {
  TCompletion C = Complete("deff", Names);
  EXPECT_EQ(C.Insert, "");
  EXPECT_EQ(C.Matches, (std::vector<std::string>{"deffacts", "deffunction"}));
  // str-cat is offered once although the names repeat it.
  C = Complete("st", Names);
  EXPECT_EQ(C.Insert, "r-");
  EXPECT_EQ(C.Matches, (std::vector<std::string>{"str-cat", "str-index", "str-length"}));
  C = Complete("<", Names);
  EXPECT_EQ(C.Insert, "");
  EXPECT_EQ(C.Matches, (std::vector<std::string>{"<=", "<>"}));
}

TEST(Completion, NoWordOrNoNameGivesNothing) {
  EXPECT_TRUE(Complete("", Names).Matches.empty());
  EXPECT_EQ(Complete("", Names).Insert, "");
  EXPECT_TRUE(Complete("?x", Names).Matches.empty());
  EXPECT_TRUE(Complete("deftemplates", Names).Matches.empty());
  EXPECT_TRUE(Complete("zz", {}).Matches.empty());
}

TEST(Completion, ACharacterTheNamesShareIsNotCutInTwo) {
  // é and è share their first byte in UTF-8.
  TCompletion C = Complete("t", {"t\xC3\xA9l\xC3\xA9", "t\xC3\xA8te"});
  EXPECT_EQ(C.Insert, "");
  EXPECT_EQ(C.Matches.size(), 2u);
  C = Complete("t", {"t\xC3\xA9l\xC3\xA9", "t\xC3\xA9t\xC3\xA9"});
  EXPECT_EQ(C.Insert, "\xC3\xA9");
}

}  // namespace
}  // namespace tavo
