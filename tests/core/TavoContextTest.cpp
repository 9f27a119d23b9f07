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

namespace tavo {
namespace {

using namespace testvalues;

TFrameLayout LayoutOf(std::initializer_list<const char16_t*> Names) {
  TFrameLayout Layout;
  for (const char16_t* Name : Names) Layout.Add(Name);
  return Layout;
}

ITavoValue Hinted(const char16_t* Name, const TFrameLayout& Layout) {
  ITavoValue Variable = Var(Name);
  Variable->SetFrameIndex(uint16_t(Layout.IndexOf(Name) + 1));
  return Variable;
}

TEST(TavoContextTest, FrameSlotsAreBindingsOfTheScopeByName) {
  TTavoContext Root;
  TFrameLayout Layout = LayoutOf({u"n", u"s"});
  TTavoContext Frame(&Root);
  Frame.OpenFrame(Layout);
  EXPECT_EQ(Frame.FindBinding(u"n"), nullptr) << "an empty slot binds nothing";
  Frame.AddLocalBinding(u"n", Int(1));
  ASSERT_NE(Frame.FindBinding(u"n"), nullptr);
  EXPECT_EQ(&Frame.GetFrameBinding(0), Frame.FindBinding(u"n"));
  EXPECT_EQ(Frame.GetVariable(u"n")->GetAsInteger(), 1);
  // A name outside the layout goes to the scope's table.
  Frame.AddLocalBinding(u"other", Int(2));
  EXPECT_EQ(Frame.GetVariable(u"other")->GetAsInteger(), 2);
  EXPECT_EQ(Frame.GetBindings().Count(), 1);
  // The slots are given back with the scope, empty for the next frame.
  {
    TTavoContext Inner(&Frame);
    Inner.OpenFrame(Layout);
    Inner.AddLocalBinding(u"s", Int(3));
    EXPECT_EQ(Inner.GetVariable(u"n")->GetAsInteger(), 1) << "n is found in the caller's frame";
  }
  TTavoContext Next(&Frame);
  Next.OpenFrame(Layout);
  EXPECT_EQ(Next.GetFrameBinding(1).GetValue(), nullptr);
}

TEST(TavoContextTest, HintedVariablesMeanWhatTheirNamesMean) {
  TTavoContext Root;
  TFrameLayout Layout = LayoutOf({u"n", u"s"});
  Root.AddBinding(u"s", Int(100));
  TTavoContext Frame(&Root);
  Frame.OpenFrame(Layout);
  Frame.AddLocalBinding(u"n", Int(5));
  ITavoValue N = Hinted(u"n", Layout);
  ITavoValue S = Hinted(u"s", Layout);
  EXPECT_EQ(N->Resolve(&Frame)->GetAsInteger(), 5);
  // Unbound in this frame: the road by name finds the outer binding, and a
  // bind changes that binding, as bind does everywhere.
  EXPECT_EQ(S->Resolve(&Frame)->GetAsInteger(), 100);
  Frame.BindVariable(*S, Int(101));
  EXPECT_EQ(Root.GetVariable(u"s")->GetAsInteger(), 101);
  EXPECT_EQ(Frame.GetFrameBinding(1).GetValue(), nullptr);
  // A hint that points at a slot of another name is ignored.
  ITavoValue Wrong = Var(u"s");
  Wrong->SetFrameIndex(1);
  EXPECT_EQ(Wrong->Resolve(&Frame)->GetAsInteger(), 101);
  // Outside any frame a hint changes nothing either.
  EXPECT_EQ(FailureOf([&] { N->Resolve(&Root); }), u"Corrupted Binding, variable not found: n");
}

}  // namespace
}  // namespace tavo
