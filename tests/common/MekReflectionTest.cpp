#include "common/MekReflection.h"

#include <gtest/gtest.h>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

enum TShade { shRed, shGreen, shBlue };
enum TDay { dyMon, dyTue, dyWed, dyThu };

const TEnumInfo ShadeInfo(u"TShade", {u"shRed", u"shGreen", u"shBlue"});
const TEnumInfo DayInfo(u"TDay", {u"dyMon", u"dyTue", u"dyWed", u"dyThu"});

class TGadget : public TComponent {
  TAVO_CLASS(TGadget, TComponent)
 public:
  explicit TGadget(TComponent* AOwner = nullptr) : TComponent(AOwner) {}
  void AfterConstruction() override { Constructed = true; }
  int GetCount() const { return FCount; }
  void SetCount(int Value) { FCount = Value; }

  int64_t Big = 0;
  uint32_t Wide = 0;
  uint8_t Small = 0;
  char16_t Grade = u'A';
  TShade Shade = shRed;
  TSet<TDay> Days;
  bool Enabled = false;
  double Ratio = 0;
  String Label;
  std::string Utf8;
  TGadget* Peer = nullptr;
  TNotifyEvent OnPing;
  bool Constructed = false;

 private:
  int FCount = 0;
};

class TGizmo : public TGadget {
  TAVO_CLASS(TGizmo, TGadget)
 public:
  float Extra = 0;
};

// Registered for its name only: it publishes nothing.
class TBare : public TPersistent {
  TAVO_CLASS(TBare, TPersistent)
};

// Not registered: it publishes what its ancestors publish.
class TUnlisted : public TGizmo {
  TAVO_CLASS(TUnlisted, TGizmo)
};

class MekReflectionTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    static bool Registered = false;
    if (Registered) return;
    Registered = true;
    RegisterClass<TGadget>()
        .Property(u"Count", &TGadget::GetCount, &TGadget::SetCount)
        .Property(u"Twice", [](const TGadget& G) { return G.GetCount() * 2; }, nullptr)
        .Property(u"Big", &TGadget::Big)
        .Property(u"Wide", &TGadget::Wide)
        .Property(u"Small", &TGadget::Small)
        .Property(u"Grade", &TGadget::Grade)
        .Property(u"Shade", &TGadget::Shade, ShadeInfo)
        .Property(u"Days", [](const TGadget& G) { return G.Days; },
                  [](TGadget& G, TSet<TDay> Value) { G.Days = Value; }, DayInfo)
        .Property(u"Enabled", &TGadget::Enabled)
        .Property(u"Ratio", &TGadget::Ratio)
        .Property(u"Label", &TGadget::Label)
        .Property(u"Utf8", &TGadget::Utf8)
        .Property(u"Peer", &TGadget::Peer)
        .Property(u"OnPing", &TGadget::OnPing);
    RegisterClass<TGizmo>().Property(u"Extra", &TGizmo::Extra);
    RegisterClass<TBare>();
  }

  TGadget Gadget;
  TGizmo Gizmo;
};

TEST_F(MekReflectionTest, ClassesAreFoundByNameAndMadeByTheirFactory) {
  EXPECT_EQ(&FindClass(u"TGizmo"), &TGizmo::StaticClass());
  EXPECT_EQ(&FindClass(u"TComponent"), &TComponent::StaticClass()) << "the layer's own classes are there";
  EXPECT_EQ(&FindClass(u"TBasicAction"), &TBasicAction::StaticClass());
  EXPECT_EQ(GetClass(u"TUnlisted"), nullptr);
  EXPECT_EQ(GetClass(u"tgizmo"), nullptr);
  EXPECT_EQ(FailureOf([] { FindClass(u"TNowhere"); }), u"Class not found: TNowhere");

  EXPECT_NO_THROW(RegisterClass<TGizmo>()) << "registering again is harmless";
  static const TClass Impostor{u"TGizmo", &TObject::StaticClass(), nullptr};
  EXPECT_EQ(FailureOf([] { RegisterClassInfo(Impostor); }), u"Another class is registered under the name TGizmo");
  EXPECT_EQ(FailureOf([] { CreateObject(Impostor); }), u"Cannot create an instance of class TGizmo");

  std::unique_ptr<TObject> Made(CreateObject(FindClass(u"TGizmo")));
  ASSERT_TRUE(dynamic_cast<TGizmo*>(Made.get()));
  EXPECT_TRUE(static_cast<TGizmo*>(Made.get())->Constructed);
  EXPECT_TRUE(IsClass(Made.get(), TGadget::StaticClass())) << "a descendant is of its ancestor's class";
  EXPECT_FALSE(IsClass(&Gadget, TGizmo::StaticClass()));
  EXPECT_FALSE(IsClass(nullptr, TObject::StaticClass()));
}

TEST_F(MekReflectionTest, TypeRecordsPublishAncestorsFirstAndNothingGivesNone) {
  EXPECT_EQ(ClassInfo(TBare::StaticClass()), nullptr);
  EXPECT_EQ(ClassInfo(TPersistent::StaticClass()), nullptr);
  TUnlisted Unlisted;
  const TTypeInfo* Info = ClassInfo(Unlisted);
  ASSERT_NE(Info, nullptr);
  EXPECT_EQ(&Info->GetClass(), &TGizmo::StaticClass()) << "the nearest registered class answers";
  const std::vector<String> Names = GetPropList(*Info);
  const std::vector<String> Expected = {u"Name",  u"Count", u"Twice", u"Big",   u"Wide",  u"Small",
                                        u"Grade", u"Shade", u"Days",  u"Enabled", u"Ratio", u"Label",
                                        u"Utf8",  u"Peer",  u"OnPing", u"Extra"};
  EXPECT_EQ(Names, Expected);
  EXPECT_TRUE(IsPublishedProp(Unlisted, u"Extra"));
  EXPECT_TRUE(IsPublishedProp(Gadget, u"Name"));
  EXPECT_FALSE(IsPublishedProp(Gadget, u"Extra"));
  EXPECT_FALSE(IsPublishedProp(Gadget, u"count"));
  EXPECT_EQ(FailureOf([&] { PropType(Gadget, u"Extra"); }), u"Class TGadget publishes no property Extra");

  EXPECT_EQ(FailureOf([] { RegisterClass<TGizmo>().Property(u"Count", &TGizmo::Extra); }),
            u"Class TGizmo already publishes a property Count");
  EXPECT_EQ(FailureOf([] { RegisterClass<TGadget>().Property(u"Extra", &TGadget::Ratio); }),
            u"Class TGadget already publishes a property Extra")
      << "a descendant registered first has the name";
}

TEST_F(MekReflectionTest, KindsFollowTheCppTypes) {
  const std::pair<const char16_t*, TTypeKind> Kinds[] = {
      {u"Count", tkInteger}, {u"Big", tkInt64},    {u"Wide", tkInt64},         {u"Small", tkInteger},
      {u"Grade", tkChar},    {u"Shade", tkEnumeration}, {u"Days", tkSet},     {u"Enabled", tkEnumeration},
      {u"Ratio", tkFloat},   {u"Label", tkString}, {u"Utf8", tkUtf8String},   {u"Peer", tkClass},
      {u"OnPing", tkMethod}, {u"Name", tkString}};
  for (const auto& [Name, Kind] : Kinds) EXPECT_EQ(PropType(Gadget, Name), Kind) << StringToUtf8(Name);
  EXPECT_EQ(GetPropInfo(Gadget, u"Peer")->GetPropClass(), &TGadget::StaticClass());
  EXPECT_EQ(GetEnumName(TypeKindInfo(), tkUtf8String), u"tkUtf8String");
  EXPECT_EQ(GetEnumValue(BooleanInfo(), u"true"), 1);
  EXPECT_EQ(FailureOf([] { GetEnumName(ShadeInfo, 3); }), u"3 is out of range for enumeration TShade");
}

TEST_F(MekReflectionTest, TypedOperationsReadAndWriteEachKind) {
  SetOrdProp(Gadget, u"Count", 7);
  EXPECT_EQ(Gadget.GetCount(), 7);
  EXPECT_EQ(GetOrdProp(Gadget, u"Twice"), 14);
  EXPECT_TRUE(GetPropInfo(Gadget, u"Twice")->IsReadOnly());
  EXPECT_EQ(FailureOf([&] { SetOrdProp(Gadget, u"Twice", 1); }), u"Property Twice is read-only");

  SetEnumProp(Gadget, u"Shade", u"shBlue");
  EXPECT_EQ(Gadget.Shade, shBlue);
  EXPECT_EQ(GetEnumProp(Gadget, u"Shade"), u"shBlue");
  Gadget.Enabled = true;
  EXPECT_EQ(GetEnumProp(Gadget, u"Enabled"), u"TRUE");

  SetSetProp(Gadget, u"Days", u"[ dyWed , dyMon ]");
  EXPECT_TRUE(Gadget.Days == TSet<TDay>({dyMon, dyWed}));
  EXPECT_EQ(GetSetProp(Gadget, u"Days"), u"dyMon,dyWed");
  EXPECT_EQ(GetSetProp(Gadget, u"Days", true), u"[dyMon,dyWed]");
  SetSetProp(Gadget, u"Days", u"[]");
  EXPECT_EQ(GetSetProp(Gadget, u"Days", true), u"[]");

  SetFloatProp(Gadget, u"Ratio", 0.25);
  EXPECT_EQ(GetFloatProp(Gadget, u"Ratio"), 0.25);
  SetStrProp(Gadget, u"Utf8", u"cr\u00e8me");
  EXPECT_EQ(Gadget.Utf8, "cr\xc3\xa8me");
  EXPECT_EQ(GetStrProp(Gadget, u"Utf8"), u"cr\u00e8me");
  SetStrProp(Gadget, u"Name", u"First");
  EXPECT_EQ(Gadget.GetName(), u"First");

  SetObjectProp(Gadget, u"Peer", &Gizmo);
  EXPECT_EQ(Gadget.Peer, &Gizmo);
  EXPECT_EQ(GetObjectProp(Gadget, u"Peer"), &Gizmo);
  TComponent Plain;
  EXPECT_EQ(FailureOf([&] { SetObjectProp(Gadget, u"Peer", &Plain); }),
            u"Property Peer takes an object of class TGadget, not <Object: TComponent>");
  SetObjectProp(Gadget, u"Peer", nullptr);
  EXPECT_EQ(Gadget.Peer, nullptr);

  int Pings = 0;
  SetMethodProp(Gadget, u"OnPing", [&](TObject*) { ++Pings; });
  GetMethodProp(Gadget, u"OnPing")(&Gadget);
  EXPECT_EQ(Pings, 1);

  // Each reader serves its own kinds.
  EXPECT_EQ(FailureOf([&] { GetOrdProp(Gadget, u"Ratio"); }), u"Invalid property type: tkFloat");
  EXPECT_EQ(FailureOf([&] { GetEnumProp(Gadget, u"Count"); }), u"Invalid property type: tkInteger");
  EXPECT_EQ(FailureOf([&] { GetSetProp(Gadget, u"Shade"); }), u"Invalid property type: tkEnumeration");
  EXPECT_EQ(FailureOf([&] { GetStrProp(Gadget, u"Peer"); }), u"Invalid property type: tkClass");
}

TEST_F(MekReflectionTest, TaggedValuesConvertToThePropertysKindOrRaise) {
  SetPropValue(Gadget, u"Count", String(u" 42"));
  EXPECT_EQ(Gadget.GetCount(), 42);
  SetPropValue(Gadget, u"Count", -3.9);
  EXPECT_EQ(Gadget.GetCount(), -3) << "floats truncate toward zero";
  SetPropValue(Gadget, u"Big", int64_t(1) << 40);
  EXPECT_EQ(Gadget.Big, int64_t(1) << 40);
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Count", int64_t(1) << 40); }),
            u"Invalid value for property Count: 1099511627776");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Small", int64_t(256)); }),
            u"Invalid value for property Small: 256");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Wide", int64_t(-1)); }), u"Invalid value for property Wide: -1");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Count", String(u"12abc")); }),
            u"Invalid value for property Count: 12abc");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Big", 1e300); }), u"Invalid value for property Big: 1E+300");

  SetPropValue(Gadget, u"Grade", String(u"B"));
  EXPECT_EQ(Gadget.Grade, u'B');
  SetPropValue(Gadget, u"Grade", int64_t(0x263A));
  EXPECT_EQ(Gadget.Grade, u'\u263A');
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Grade", String(u"BC")); }),
            u"Invalid value for property Grade: BC");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Grade", int64_t(0x10000)); }),
            u"Invalid value for property Grade: 65536");

  SetPropValue(Gadget, u"Shade", String(u"SHGREEN"));
  EXPECT_EQ(Gadget.Shade, shGreen) << "a name that differs in case only";
  SetPropValue(Gadget, u"Shade", int64_t(2));
  EXPECT_EQ(Gadget.Shade, shBlue);
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Shade", String(u"shPink")); }),
            u"Invalid value for property Shade: shPink");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Shade", int64_t(3)); }), u"Invalid value for property Shade: 3");
  SetPropValue(Gadget, u"Enabled", String(u"TRUE"));
  EXPECT_TRUE(Gadget.Enabled);

  SetPropValue(Gadget, u"Days", String(u"dyThu"));
  EXPECT_TRUE(Gadget.Days == TSet<TDay>({dyThu}));
  SetPropValue(Gadget, u"Days", int64_t(3));
  EXPECT_TRUE(Gadget.Days == TSet<TDay>({dyMon, dyTue}));
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Days", String(u"dyMon,,dyTue")); }),
            u"Invalid value for property Days: dyMon,,dyTue");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Days", int64_t(16)); }), u"Invalid value for property Days: 16");

  SetPropValue(Gadget, u"Ratio", String(u"2.5"));
  EXPECT_EQ(Gadget.Ratio, 2.5);
  SetPropValue(Gadget, u"Ratio", int64_t(3));
  EXPECT_EQ(Gadget.Ratio, 3.0);
  SetPropValue(Gadget, u"Label", int64_t(12));
  EXPECT_EQ(Gadget.Label, u"12");
  SetPropValue(Gadget, u"Label", 0.5);
  EXPECT_EQ(Gadget.Label, u"0.5");

  SetPropValue(Gadget, u"Peer", static_cast<TObject*>(&Gizmo));
  EXPECT_EQ(Gadget.Peer, &Gizmo);
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Peer", String(u"Gizmo")); }),
            u"Invalid value for property Peer: Gizmo");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Label", static_cast<TObject*>(&Gizmo)); }),
            u"Invalid value for property Label: <Object: TGizmo>");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"OnPing", int64_t(0)); }), u"Invalid property type: tkMethod");
  EXPECT_EQ(FailureOf([&] { SetPropValue(Gadget, u"Nope", int64_t(0)); }), u"Class TGadget publishes no property Nope");
}

}  // namespace
}  // namespace tavo
