#include "core/TavoContext.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

TEST(TavoContextTest, BindingsReachUpTheChainAsEachOperationSays) {
  TTavoContext Root;
  Root.AddBinding(u"x", Int(1));
  std::unique_ptr<TTavoContext> Child(Root.Push());
  EXPECT_EQ(Child->GetParent(), &Root);
  // bind of a name only the parent has changes the parent's binding.
  Child->AddBinding(u"x", Int(2));
  EXPECT_EQ(Root.GetVariable(u"x")->GetAsInteger(), 2);
  // A local binding hides the outer one until the child goes.
  Child->AddLocalBinding(u"x", Int(3));
  EXPECT_EQ(Child->GetVariable(u"x")->GetAsInteger(), 3);
  EXPECT_EQ(Root.GetVariable(u"x")->GetAsInteger(), 2);
  // SetVariable changes this scope's own binding, else binds as AddBinding.
  Child->SetVariable(u"x", Int(4));
  EXPECT_EQ(Child->GetVariable(u"x")->GetAsInteger(), 4);
  Child->SetVariable(u"y", Int(5));
  EXPECT_EQ(Root.FindBinding(u"y"), nullptr);
  // Globals live at the root.
  Child->AddGlobalBinding(u"g", Int(6));
  EXPECT_NE(Root.FindGlobalBinding(u"g"), nullptr);
  EXPECT_EQ(Child->FindGlobalBinding(u"y"), nullptr);
  EXPECT_EQ(FailureOf([&] { Child->GetVariable(u"nope"); }), u"Unknown variable name: nope");
  // Coordinates replace whatever binding the name had, wherever it was.
  Child->AddBinding(u"g", 0, u"slot", NoSubIndex);
  EXPECT_EQ(Root.FindBinding(u"g"), nullptr);
  EXPECT_EQ(Child->FindBinding(u"g")->GetSlotIndex(), u"slot");
}

TEST(TavoContextTest, PopCarriesTheReturnOutwardAndClearDropsIt) {
  TTavoContext Root;
  EXPECT_EQ(Root.Pop(), &Root);
  std::unique_ptr<TTavoContext> Child(Root.Push());
  Child->SetReturnValue(Int(9));
  EXPECT_EQ(Child->Pop(), &Root);
  EXPECT_TRUE(Root.GetReturning());
  EXPECT_EQ(Root.GetReturnValue()->GetAsInteger(), 9);
  Root.AddBinding(u"a", Int(1));
  Root.Clear();
  EXPECT_FALSE(Root.GetReturning()) << "clearing the bindings clears a pending return";
  EXPECT_EQ(Root.FindBinding(u"a"), nullptr);
}

TEST(TavoContextTest, VariablesResolveToTheirBoundValue) {
  TTavoContext Root;
  ITavoValue Bound = Int(7);
  Root.AddBinding(u"v", Bound);
  EXPECT_EQ(Var(u"v")->Resolve(&Root), Bound) << "the bound value itself, not a copy";
  EXPECT_EQ(FailureOf([&] { Var(u"w")->Resolve(&Root); }), u"Corrupted Binding, variable not found: w");
  EXPECT_EQ(FailureOf([&] { Var(u"v")->Resolve(nullptr); }),
            u"No context found when trying to resolve a dtVariable value");
}

TEST(TavoContextTest, ExpandListEvaluatesAndSplicesWhileFlattenOnlyWalks) {
  TTavoContext Root;
  IValueVector Inner = Make<TValueVector>();
  Inner->Add(Int(2));
  Inner->Add(Int(3));
  Root.AddBinding(u"inner", Make<TTavoValue>(Inner));
  IValueVector Outer = Make<TValueVector>();
  Outer->Add(Int(1));
  Outer->Add(Var(u"inner"));
  Outer->Add(Int(4));
  EXPECT_EQ(Root.ExpandList(Outer)->ToString(), u"1 2 3 4 ");
  EXPECT_EQ(TTavoContext::FlattenList(Outer)->ToString(), u"1 ?inner 4 ");
  IValueVector Nested = Make<TValueVector>();
  Nested->Add(Make<TTavoValue>(Inner));
  Nested->Add(Make<TTavoValue>(Outer));
  EXPECT_EQ(TTavoContext::FlattenList(Nested)->ToString(), u"2 3 1 ?inner 4 ");
}

}  // namespace
}  // namespace tavo
