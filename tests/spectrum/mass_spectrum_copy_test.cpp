// Which members of a mass spectrum are copied and moved.
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/mass_spectrum_fixture.h"

namespace zrml {
namespace {

/// Passes a spectrum with one changed member to `copy` in every case and checks whether the result has the
/// change.
template <class Copy>
void ExpectCopied(const std::vector<MemberCase>& cases, bool copied, Copy copy) {
  for (const MemberCase& member : cases) {
    CZRMassSpectrum source;
    EXPECT_FALSE(member.isChanged(source)) << member.name;
    member.change(source);
    CZRMassSpectrum result;
    copy(source, result);
    EXPECT_EQ(member.isChanged(result), copied) << member.name;
    EXPECT_TRUE(member.isChanged(source)) << member.name;
  }
}

TEST(MassSpectrumCopy, CopyAttributesCopiesEveryAttributeAndNothingElse) {
  const auto copy = [](CZRMassSpectrum& from, CZRMassSpectrum& to) { to.CopyAttributes(from); };
  ExpectCopied(kAttributes, true, copy);
  ExpectCopied(kWholeCopyOnly, false, copy);

  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum target = MakeSpectrum({1, 2, 3}, {4, 5, 6});
  CZRMassSpectrum before = target;
  target.CopyAttributes(source);
  ExpectSamePoints(target, before);
}

TEST(MassSpectrumCopy, CopyAttributesOfItselfChangesNothing) {
  CZRMassSpectrum s = WithAllArrays();
  for (const MemberCase& member : kAttributes) member.change(s);
  CZRMassSpectrum before = s;
  s.CopyAttributes(s);
  ExpectSamePoints(s, before);
  for (const MemberCase& member : kAttributes) EXPECT_TRUE(member.isChanged(s)) << member.name;
}

TEST(MassSpectrumCopy, CopyConstructionCopiesEveryMember) {
  const auto copy = [](CZRMassSpectrum& from, CZRMassSpectrum& to) {
    CZRMassSpectrum made(from);
    to.Swap(made);
  };
  ExpectCopied(kAttributes, true, copy);
  ExpectCopied(kWholeCopyOnly, true, copy);

  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum made(source);
  ExpectSamePoints(made, source);
}

TEST(MassSpectrumCopy, AssignmentCopiesEveryMember) {
  const auto copy = [](CZRMassSpectrum& from, CZRMassSpectrum& to) { to = from; };
  ExpectCopied(kAttributes, true, copy);
  ExpectCopied(kWholeCopyOnly, true, copy);

  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum target = MakeSpectrum({1, 2, 3}, {4, 5, 6});
  target = source;
  ExpectSamePoints(target, source);
}

TEST(MassSpectrumCopy, MoveTakesEveryMember) {
  const auto construct = [](CZRMassSpectrum& from, CZRMassSpectrum& to) {
    CZRMassSpectrum copy(from);
    CZRMassSpectrum made(std::move(copy));
    to.Swap(made);
  };
  const auto assign = [](CZRMassSpectrum& from, CZRMassSpectrum& to) {
    CZRMassSpectrum copy(from);
    to = std::move(copy);
  };
  for (const auto& cases : {kAttributes, kWholeCopyOnly}) {
    ExpectCopied(cases, true, construct);
    ExpectCopied(cases, true, assign);
  }

  CZRMassSpectrum expected = WithAllArrays();
  CZRMassSpectrum source = expected;
  const double* const masses = source.GetMasses();
  CZRMassSpectrum made(std::move(source));
  ExpectSamePoints(made, expected);
  EXPECT_EQ(made.GetMasses(), masses);  // taken, not copied
}

TEST(MassSpectrumCopy, CopiesAreDeep) {
  CZRMassSpectrum source = WithAllArrays();
  CZRMassSpectrum copy(source);
  CZRMassSpectrum assigned;
  assigned = source;
  source.SetMass(0, 555);
  source.SetIntensity(1, 666);
  source.GetPointFlags()[1] = 77;
  for (CZRMassSpectrum* other : {&copy, &assigned}) {
    EXPECT_EQ(other->MassVector(), (HostDoubles{100, 200}));
    EXPECT_EQ(other->IntensityVector(), (HostDoubles{3, 4}));
    EXPECT_EQ(other->GetPointFlags()[1], 11);
  }
}

TEST(MassSpectrumCopy, SelfAssignmentChangesNothing) {
  CZRMassSpectrum s = WithAllArrays();
  s.SetTitle(L"title");
  CZRMassSpectrum before = s;
  const CZRMassSpectrum& same = s;
  s = same;
  ExpectSamePoints(s, before);
  EXPECT_EQ(s.GetTitle(), L"title");
}

}  // namespace
}  // namespace zrml
