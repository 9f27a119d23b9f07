#include "common/MekObjects.h"

#include <gtest/gtest.h>

#include "common/MekExceptions.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

class TProbe : public TCloneableObject {
  TAVO_CLASS(TProbe, TCloneableObject)
 public:
  TProbe() = default;
  explicit TProbe(int* Deaths) : FDeaths(Deaths) {}
  ~TProbe() override {
    if (FDeaths) ++*FDeaths;
  }
  void AfterConstruction() override { Constructed = RefCount(); }
  using TCloneableObject::Assign;
  void Assign(const TPersistent* Source) override {
    if (auto* Probe = dynamic_cast<const TProbe*>(Source)) {
      Payload = Probe->Payload;
      return;
    }
    TCloneableObject::Assign(Source);
  }
  int Payload = 0;
  int Constructed = -1;

 private:
  int* FDeaths = nullptr;
};

class TOtherProbe : public TCloneableObject {};

class TNoted : public TComponent {
  TAVO_CLASS(TNoted, TComponent)
 public:
  explicit TNoted(TComponent* AOwner = nullptr) : TComponent(AOwner) {}
  void Assign(const TPersistent* Source) override {
    if (auto* Noted = dynamic_cast<const TNoted*>(Source)) {
      Label = Noted->Label;
      return;
    }
    TComponent::Assign(Source);
  }
  String Label;
  void Notification(TComponent* Component, TOperation Operation) override {
    TComponent::Notification(Component, Operation);
    if (Operation == opRemove) Removed.push_back(Component);
  }
  std::vector<TComponent*> Removed;
};

TEST(MekObjectsTest, CountedReferencesFreeOnLastRelease) {
  int Deaths = 0;
  {
    TRef<TProbe> A = Make<TProbe>(&Deaths);
    EXPECT_EQ(A->Constructed, 1) << "the factory holds the object while it finishes";
    TRef<TCloneableObject> B = A;
    EXPECT_EQ(A->RefCount(), 2);
    TRef<TProbe> C = std::move(A);
    EXPECT_FALSE(A);
    EXPECT_EQ(C->RefCount(), 2);
    B.Reset();
    EXPECT_EQ(Deaths, 0);
    EXPECT_TRUE(RefCast<TProbe>(TRef<TCloneableObject>(C)) == C);
    EXPECT_FALSE(RefCast<TOtherProbe>(C));
  }
  EXPECT_EQ(Deaths, 1);
}

TEST(MekObjectsTest, ClassReferencesDescribeAndCreateTheirClass) {
  EXPECT_EQ(TProbe::StaticClass().Name, String(u"TProbe"));
  EXPECT_TRUE(TProbe::StaticClass().InheritsFrom(TPersistent::StaticClass()));
  EXPECT_FALSE(TPersistent::StaticClass().InheritsFrom(TProbe::StaticClass()));
  TRef<TProbe> Original = Make<TProbe>();
  Original->Payload = 42;
  ICloneableObject Copy = Original->Clone();
  auto* Probe = dynamic_cast<TProbe*>(Copy.Get());
  ASSERT_NE(Probe, nullptr);
  EXPECT_NE(Probe, Original.Get());
  EXPECT_EQ(Probe->Payload, 42);
  EXPECT_EQ(Copy->RefCount(), 1);
}

TEST(MekObjectsTest, ImpossibleAssignmentNamesBothClasses) {
  TRef<TProbe> Probe = Make<TProbe>();
  TComponent Component;
  try {
    Probe->Assign(&Component);
    FAIL() << "assignment from a component should fail";
  } catch (const EMekException& E) {
    EXPECT_EQ(E.Message(), u"Cannot assign a TComponent to a TProbe");
  }
}

TEST(MekObjectsTest, ComponentsFreeWhatTheyOwnAndTellTheirPeers) {
  TNoted Watcher;
  auto* Owner = new TNoted();
  auto* Child = new TNoted(Owner);
  auto* Other = new TNoted(Owner);
  EXPECT_EQ(Owner->GetComponentCount(), 2);
  Watcher.FreeNotification(Child);
  delete Other;
  EXPECT_EQ(Owner->GetComponentCount(), 1);
  ASSERT_EQ(Owner->Removed.size(), 1u);
  EXPECT_EQ(Owner->Removed[0], Other);
  delete Owner;  // frees Child, which tells Watcher
  ASSERT_EQ(Watcher.Removed.size(), 1u);
  EXPECT_EQ(Watcher.Removed[0], Child);
}

TEST(MekObjectsTest, PeerMayUnregisterWhileBeingTold) {
  // A peer that frees itself in its Notification must not upset the teardown.
  static int Freed = 0;
  struct TSelfFreeing : TComponent {
    ~TSelfFreeing() override { ++Freed; }
    void Notification(TComponent* Component, TOperation Operation) override {
      TComponent::Notification(Component, Operation);
      if (Operation == opRemove) delete this;
    }
  };
  Freed = 0;
  auto* Subject = new TComponent();
  auto* First = new TSelfFreeing();
  auto* Second = new TSelfFreeing();
  First->FreeNotification(Subject);
  Second->FreeNotification(Subject);
  delete Subject;  // the sanitizer checks that nothing freed is touched
  EXPECT_EQ(Freed, 2) << "both peers were told and freed themselves";
}

TEST(MekObjectsTest, ComponentCloneKeepsClassAndOwner) {
  TComponent Owner;
  auto* Source = new TNoted(&Owner);
  Source->Label = u"x";
  TComponent* Copy = CloneComponent(Source);
  ASSERT_NE(Copy, nullptr);
  EXPECT_NE(Copy, Source);
  EXPECT_EQ(static_cast<TNoted*>(Copy)->Label, u"x");
  EXPECT_EQ(&Copy->ClassType(), &TNoted::StaticClass());
  EXPECT_EQ(Copy->GetOwner(), &Owner);
  EXPECT_EQ(Owner.GetComponentCount(), 2);
}

TEST(MekObjectsTest, NamedComponentsAreUniqueAmongTheirOwnersComponents) {
  TComponent Owner, OtherOwner;
  auto* Lamp = new TComponent(&Owner);
  auto* Fan = new TComponent(&Owner);
  auto* Elsewhere = new TComponent(&OtherOwner);
  EXPECT_EQ(Lamp->GetName(), u"");
  Lamp->SetName(u"Lamp");
  Fan->SetName(u"Fan");
  Elsewhere->SetName(u"Lamp");  // another owner's namespace
  EXPECT_EQ(Owner.FindComponent(u"Lamp"), Lamp);
  EXPECT_EQ(Owner.FindComponent(u"lamp"), nullptr) << "names compare with their case";
  EXPECT_EQ(Owner.FindComponent(u""), nullptr);
  EXPECT_EQ(OtherOwner.FindComponent(u"Lamp"), Elsewhere);

  EXPECT_EQ(FailureOf([&] { Fan->SetName(u"Lamp"); }), u"A component named Lamp already exists");
  EXPECT_EQ(Fan->GetName(), u"Fan");
  Lamp->SetName(u"Lamp");  // its own name again
  EXPECT_EQ(FailureOf([&] { Owner.InsertComponent(Elsewhere); }), u"A component named Lamp already exists");
  EXPECT_EQ(Elsewhere->GetOwner(), &OtherOwner) << "a refused insertion leaves the component where it was";

  Lamp->SetName(u"");
  EXPECT_EQ(Owner.FindComponent(u"Lamp"), nullptr);
  Owner.InsertComponent(Elsewhere);
  EXPECT_EQ(Owner.FindComponent(u"Lamp"), Elsewhere);
  delete Elsewhere;  // its name goes with it
  Fan->SetName(u"Lamp");
  EXPECT_EQ(Owner.FindComponent(u"Lamp"), Fan);
}

TEST(MekObjectsTest, ActionAnswersWhetherItHadSomethingToDo) {
  TBasicAction Action;
  EXPECT_FALSE(Action.Execute());
  TObject* Sender = nullptr;
  Action.OnExecute = [&](TObject* From) { Sender = From; };
  EXPECT_TRUE(Action.Execute());
  EXPECT_EQ(Sender, &Action);
}

// Two bases at different offsets, so that a cross cast moves the pointer.
struct TFirstBase {
  virtual ~TFirstBase() = default;
  int64_t Padding = 1;
};
struct TSecondBase {
  virtual ~TSecondBase() = default;
  int Mark = 0;
};
struct TBoth : TFirstBase, TSecondBase {};
struct TOnlyFirst : TFirstBase {};
struct TBothAgain : TFirstBase, TSecondBase {
  int64_t More = 3;
};

TEST(MekObjectsTest, RepeatedCastAnswersAsDynamicCastAcrossChangingTypes) {
  TBoth A, B;
  TOnlyFirst C;
  TBothAgain D;
  A.Mark = 1;
  B.Mark = 2;
  D.Mark = 4;
  // The same dynamic type twice (the cached offset), a type without the
  // base, another type with it at its own offset, and nothing at all.
  for (int Round = 0; Round < 2; ++Round) {
    TFirstBase* Objects[] = {&A, &B, &C, &D, &A, nullptr};
    for (TFirstBase* Object : Objects) {
      TSecondBase* Expected = Object ? dynamic_cast<TSecondBase*>(Object) : nullptr;
      EXPECT_EQ(RepeatedCast<TSecondBase>(Object), Expected);
    }
  }
  EXPECT_EQ(RepeatedCast<TSecondBase>(static_cast<TFirstBase*>(&B))->Mark, 2);
}

}  // namespace
}  // namespace tavo
