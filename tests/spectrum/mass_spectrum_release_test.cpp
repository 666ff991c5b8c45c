// Who frees the point data of a mass spectrum, and when.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/spectrum/mass_spectrum_fixture.h"

namespace zrml {
namespace {

/// Data of one spectrum and a record of how often each was released.
class DataOwner {
 public:
  static constexpr int kPoints = 5;

  /// A spectrum whose point i holds datum i.
  CZRMassSpectrum Make() {
    CZRMassSpectrum s(kPoints);
    s.EnablePointData(true);
    for (int i = 0; i < kPoints; ++i) s.GetPointData()[i] = &releases_[i];
    s.SetPointDataRelease(&DataOwner::Release, this);
    return s;
  }

  /// How often each datum was released, as text: "00011".
  std::string Releases() const {
    std::string text;
    for (const int count : releases_) text += static_cast<char>('0' + count);
    return text;
  }

  int NullReleases() const { return nullReleases_; }

 private:
  static void Release(void* datum, void* context) {
    auto* const owner = static_cast<DataOwner*>(context);
    ++*(datum ? static_cast<int*>(datum) : &owner->nullReleases_);
  }

  int releases_[kPoints] = {};
  int nullReleases_ = 0;
};

TEST(MassSpectrumRelease, ReleasesWhatResizingRemoves) {
  const struct {
    const char* name;
    void (*act)(CZRMassSpectrum&);
    const char* releases;
  } cases[] = {
      {"shrink", [](CZRMassSpectrum& s) { s.Resize(3, false, true, false, false); }, "00011"},
      {"shrink by SetSize", [](CZRMassSpectrum& s) { s.SetSize(1); }, "01111"},
      {"same size", [](CZRMassSpectrum& s) { s.Resize(5, true, true, true, true); }, "00000"},
      {"grow", [](CZRMassSpectrum& s) { s.SetSize(9); }, "00000"},
      {"without data", [](CZRMassSpectrum& s) { s.Resize(5, false, false, false, false); }, "11111"},
      {"grow without data", [](CZRMassSpectrum& s) { s.Resize(9, false, false, false, false); }, "11111"},
      {"to zero", [](CZRMassSpectrum& s) { s.Resize(0, false, true, false, false); }, "11111"},
      {"to minus one", [](CZRMassSpectrum& s) { s.Resize(-1, false, false, false, false); }, "00000"},
      {"clear", [](CZRMassSpectrum& s) { s.Clear(); }, "11111"},
      {"disable", [](CZRMassSpectrum& s) { s.EnablePointData(false); }, "11111"},
      {"enable again", [](CZRMassSpectrum& s) { s.EnablePointData(true); }, "00000"},
      {"twice",
       [](CZRMassSpectrum& s) {
         s.Clear();
         s.Clear();
       },
       "11111"},
      {"unset",
       [](CZRMassSpectrum& s) {
         s.SetPointDataRelease(nullptr, nullptr);
         s.Clear();
       },
       "00000"},
      {"copy attributes", [](CZRMassSpectrum& s) { s.CopyAttributes(CZRMassSpectrum()); }, "00000"},
      {"assign an empty one",
       [](CZRMassSpectrum& s) { s = static_cast<const CZRMassSpectrum&>(CZRMassSpectrum()); }, "11111"},
      {"assign itself", [](CZRMassSpectrum& s) { s = static_cast<const CZRMassSpectrum&>(s); }, "00000"},
  };
  for (const auto& expected : cases) {
    DataOwner owner;
    CZRMassSpectrum s = owner.Make();
    ASSERT_EQ(owner.Releases(), "00000");
    expected.act(s);
    EXPECT_EQ(owner.Releases(), expected.releases) << expected.name;
    EXPECT_EQ(owner.NullReleases(), 0) << expected.name;
  }
}

TEST(MassSpectrumRelease, TheDestructorReleasesEveryDatumOnce) {
  DataOwner owner;
  { const CZRMassSpectrum s = owner.Make(); }
  EXPECT_EQ(owner.Releases(), "11111");
}

TEST(MassSpectrumRelease, NullDataAreReleasedToo) {
  DataOwner owner;
  CZRMassSpectrum s = owner.Make();
  s.SetSize(7);
  s.Clear();
  EXPECT_EQ(owner.Releases(), "11111");
  EXPECT_EQ(owner.NullReleases(), 2);
}

TEST(MassSpectrumRelease, WithoutPointDataNothingIsReleased) {
  DataOwner owner;
  CZRMassSpectrum s = owner.Make();
  s.EnablePointData(false);
  s.Resize(2, true, false, true, true);
  s.Clear();
  EXPECT_EQ(owner.Releases(), "11111");
  EXPECT_EQ(owner.NullReleases(), 0);
}

TEST(MassSpectrumRelease, AMovedSpectrumReleasesEachDatumOnce) {
  DataOwner taken;
  DataOwner replaced;
  {
    CZRMassSpectrum source = taken.Make();
    CZRMassSpectrum constructed(std::move(source));
    EXPECT_EQ(taken.Releases(), "00000");
    CZRMassSpectrum target = replaced.Make();
    target = std::move(constructed);
    EXPECT_EQ(taken.Releases(), "00000");
  }
  EXPECT_EQ(taken.Releases(), "11111");
  EXPECT_EQ(replaced.Releases(), "11111");
}

TEST(MassSpectrumRelease, ACopyHoldsTheSameDataAndReleasesThemAgain) {
  // Deliberate: data are not duplicated, and code that sets the function is responsible for a single release.
  DataOwner owner;
  {
    CZRMassSpectrum copy(owner.Make());
    const CZRMassSpectrum second(copy);
  }
  EXPECT_EQ(owner.Releases(), "22222");
}

}  // namespace
}  // namespace zrml
