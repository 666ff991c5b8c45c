#include "spectrum/profile_resampling.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "spectrum/add_spectrum.h"
#include "tests/spectrum/failing_allocation.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

double Total(const Doubles& values) { return std::accumulate(values.begin(), values.end(), 0.0); }

int Distribute(const Doubles& masses, const Doubles& intensities, const Doubles& gridMasses,
               Doubles& gridIntensities) {
  return DistributeOntoGrid(masses.data(), intensities.data(), static_cast<int>(masses.size()),
                            gridMasses.data(), gridIntensities.data(), static_cast<int>(gridMasses.size()));
}

TEST(DistributeOntoGrid, CasesByHand) {
  const struct {
    const char* name;
    Doubles masses;
    Doubles intensities;
    Doubles grid;
    Doubles before;
    Doubles after;
    int seen;
  } cases[] = {
      {"in proportion to closeness", {100.25}, {4}, {100, 101}, {10, 20}, {13, 21}, 1},
      {"exactly on the first point", {100}, {4}, {100, 101}, {1, 1}, {5, 1}, 1},
      {"exactly on a later point", {102}, {4}, {100, 101, 102}, {1, 1, 1}, {1, 1, 5}, 1},
      {"twice on one point", {101, 101}, {4, 2}, {100, 101, 102}, {0, 0, 0}, {0, 6, 0}, 2},
      {"the cursor moves on",
       {100.5, 102.5, 103},
       {2, 4, 8},
       {100, 101, 102, 103},
       {0, 0, 0, 0},
       {1, 1, 2, 10},
       3},
      {"uneven grids", {103}, {4}, {100, 104}, {0, 0}, {1, 3}, 1},
      {"below the grid is skipped", {99, 100.5}, {4, 2}, {100, 101}, {0, 0}, {1, 1}, 2},
      {"no intensity is skipped", {100.5, 100.5}, {0, -3}, {100, 101}, {1, 1}, {1, 1}, 2},
      {"beyond the grid ends the walk", {100.5, 101.5, 100.5}, {2, 2, 2}, {100, 101}, {0, 0}, {1, 1}, 1},
      {"beyond the grid at once", {200}, {2}, {100, 101}, {0, 0}, {0, 0}, 0},
      {"a point at mass 0 carries nothing", {0.5}, {4}, {0, 1}, {7, 0}, {0, 2}, 1},
      {"also without source", {}, {}, {0, 1}, {7, 1}, {0, 1}, 0},
      {"but not when the walk ended early: deliberate", {0.5, 2}, {4, 1}, {0, 1}, {7, 0}, {9, 2}, 1},
      {"a grid of one point", {99, 100, 101}, {1, 2, 4}, {100}, {0}, {2}, 2},
      {"an empty grid", {99}, {1}, {}, {}, {}, 1},
      {"NaN masses are skipped", {std::nan(""), 100.5}, {4, 2}, {100, 101}, {0, 0}, {1, 1}, 2},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    Doubles intensities = test.before;
    EXPECT_EQ(Distribute(test.masses, test.intensities, test.grid, intensities), test.seen);
    EXPECT_EQ(intensities, test.after);
  }
}

TEST(DistributeOntoGrid, IntensityInsideTheGridIsConserved) {
  RandomNumbers random(9);
  for (int round = 0; round < 500; ++round) {
    Doubles grid;
    double mass = 100;
    for (int i = 2 + random.Below(50); i > 0; --i) grid.push_back(mass += 0.001 + UnitNumber(random));
    Doubles masses;
    Doubles intensities;
    double inside = 0;
    mass = 99;
    while (mass < grid.back()) {
      masses.push_back(mass);
      intensities.push_back(UnitNumber(random) - 0.1);
      if (mass >= grid.front() && intensities.back() > 0) inside += intensities.back();
      mass += 0.3 * UnitNumber(random);
    }
    Doubles sums(grid.size());
    EXPECT_EQ(Distribute(masses, intensities, grid, sums), static_cast<int>(masses.size()));
    ASSERT_NEAR(Total(sums), inside, 1e-12 * inside + 1e-300);
    // Also the centre of mass: closeness is linear.
    double moment = 0;
    double expected = 0;
    for (std::size_t i = 0; i < grid.size(); ++i) moment += grid[i] * sums[i];
    for (std::size_t i = 0; i < masses.size(); ++i)
      if (masses[i] >= grid.front() && intensities[i] > 0) expected += masses[i] * intensities[i];
    ASSERT_NEAR(moment, expected, 1e-12 * expected + 1e-300);
  }
}

// Peaks of a spectrum on an axis, zeros left out but for two at either side.
CZRMassSpectrum Acquire(const Doubles& axis, const Doubles& peaks, double width) {
  Doubles full(axis.size());
  for (std::size_t i = 0; i < axis.size(); ++i) {
    for (const double peak : peaks) {
      const double d = (axis[i] - peak) / width;
      if (std::fabs(d) < 3) full[i] += 1000 * std::exp(-0.5 * d * d);
    }
  }
  Doubles masses;
  Doubles intensities;
  for (std::size_t i = 0; i < axis.size(); ++i) {
    bool near = false;
    for (std::size_t k = i - std::min<std::size_t>(i, 2); k <= std::min(i + 2, axis.size() - 1); ++k)
      near |= full[k] > 0;
    if (!near) continue;
    masses.push_back(axis[i]);
    intensities.push_back(full[i]);
  }
  return MakeProfile(masses, intensities);
}

TEST(ResampleOnto, AllIntensityArrivesAndOwnSamplesStay) {
  for (const Analyser& analyser : kAnalysers) {
    for (const double shift : {0.3, 0.5}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << shift);
      const Doubles axis = analyser.Axis(300, 600, 6000);
      const double step = axis[1] - axis[0];
      const Doubles shifted = analyser.Axis(300 + shift * step, 600 + shift * step, 6000);
      CZRMassSpectrum target = Acquire(axis, {350, 420, 421, 560}, 0.3);
      CZRMassSpectrum source = Acquire(shifted, {310, 350, 390, 420.5, 590}, 0.3);
      const CZRMassSpectrum before = target;
      const double expected = target.GetTotalIntensity() + source.GetTotalIntensity();
      const int count = ResampleOnto(source, target);
      EXPECT_EQ(count, target.GetCount());
      EXPECT_NEAR(target.GetTotalIntensity(), expected, 1e-11 * expected);
      double low = 0;
      double high = 0;
      target.GetMassRange(low, high);
      EXPECT_LE(low, 310);
      EXPECT_GE(high, 590);
      // Away from the source's peaks target's samples are unchanged.
      for (int i = 0; i < before.GetCount(); ++i) {
        int first = 0;
        int last = 0;
        const double mass = before.GetMass(i);
        ASSERT_TRUE(target.FindIndexRange(mass, mass, first, last));
        ASSERT_EQ(first, last);
        const auto at = static_cast<std::size_t>(first);
        if (std::fabs(mass - 560) < 2) {
          ASSERT_EQ(Intensities(target)[at], Intensities(before)[static_cast<std::size_t>(i)]);
        } else {
          ASSERT_GE(Intensities(target)[at], Intensities(before)[static_cast<std::size_t>(i)]);
        }
      }
    }
  }
}

// Linear sharing moves no centre and broadens a peak by no more than a step.
TEST(ResampleOnto, PeaksStayWhereTheyAre) {
  const Doubles axis = kAnalysers[1].Axis(300, 600, 20000);
  const CZRMassSpectrum target = Acquire(axis, {300.5, 599.5}, 0.05);
  const CZRMassSpectrum source = Acquire(kAnalysers[3].Axis(300, 600, 17000), {450}, 0.05);
  CZRMassSpectrum sum = target;
  ResampleOnto(source, sum);
  const auto moments = [](const CZRMassSpectrum& spectrum, double& mean, double& variance) {
    double total = 0;
    double first = 0;
    double second = 0;
    for (int i = 0; i < spectrum.GetCount(); ++i) {
      const double d = spectrum.GetMass(i) - 450;
      if (std::fabs(d) > 5) continue;
      const double a = Intensities(spectrum)[static_cast<std::size_t>(i)];
      total += a;
      first += a * d;
      second += a * d * d;
    }
    mean = first / total;
    variance = second / total - mean * mean;
  };
  double mean[2];
  double variance[2];
  moments(source, mean[0], variance[0]);
  moments(sum, mean[1], variance[1]);
  EXPECT_NEAR(mean[1], mean[0], 1e-9);
  const double step = 2 * std::sqrt(450.0) * (std::sqrt(600.0) - std::sqrt(300.0)) / 19999;
  EXPECT_GE(variance[1], variance[0]);
  EXPECT_LE(variance[1], variance[0] + step * step / 4);
}

TEST(ResampleOnto, NothingHappensToTargetsOfFewerThanFivePoints) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103}, {1, 1, 1, 1});
  EXPECT_EQ(ResampleOnto(MakeProfile({101.5}, {4}), target), 4);
  EXPECT_EQ(Intensities(target), (Doubles{1, 1, 1, 1}));
  target = MakeProfile({100, 101, 102, 103, 104}, {1, 1, 1, 1, 1});
  EXPECT_EQ(ResampleOnto(MakeProfile({101.5}, {4}), target), 5);
  EXPECT_EQ(Intensities(target), (Doubles{1, 3, 3, 1, 1}));
}

TEST(ResampleOnto, AnEmptySourceAddsNothing) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104}, {1, 1, 1, 1, 1});
  EXPECT_EQ(ResampleOnto(CZRMassSpectrum(), target), 5);
  EXPECT_EQ(Intensities(target), (Doubles{1, 1, 1, 1, 1}));
}

TEST(ResampleOnto, ASpectrumOntoItselfDoubles) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104}, {1, 2, 3, 2, 1});
  EXPECT_EQ(ResampleOnto(target, target), 5);
  EXPECT_EQ(Intensities(target), (Doubles{2, 4, 6, 4, 2}));
}

TEST(ProfileResampler, TheSameObjectAddsNothing) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104}, {1, 2, 3, 2, 1});
  ProfileResampler resampler;
  EXPECT_EQ(resampler.Add(target, target), 5);
  EXPECT_EQ(Intensities(target), (Doubles{1, 2, 3, 2, 1}));
}

TEST(ProfileResampler, AddsSeveralSources) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104}, {1, 2, 3, 2, 1});
  ProfileResampler resampler;
  EXPECT_EQ(resampler.Add(MakeProfile({101.5}, {4}), target), 5);
  EXPECT_EQ(resampler.Add(MakeProfile({105.5}, {4}), target), 7);
  EXPECT_EQ(Masses(target), (Doubles{100, 101, 102, 103, 104, 105, 106}));
  EXPECT_EQ(Intensities(target), (Doubles{1, 4, 5, 2, 1, 2, 2}));
}

// Another target, with steps of 2: a resampler that has learned steps of 1 fills in the missing points.
TEST(ProfileResampler, LearnsFromTheFirstTargetOnly) {
  CZRMassSpectrum first = MakeProfile({100, 101, 102, 103, 104}, {1, 1, 1, 1, 1});
  CZRMassSpectrum target = MakeProfile({100, 102, 104, 106, 108}, {1, 1, 1, 1, 1});
  ProfileResampler resampler;
  EXPECT_EQ(resampler.Add(MakeProfile({101}, {1}), first), 5);
  EXPECT_EQ(resampler.Add(MakeProfile({103}, {2}), target), 9);
  EXPECT_EQ(Masses(target), (Doubles{100, 101, 102, 103, 104, 105, 106, 107, 108}));
  EXPECT_EQ(Intensities(target), (Doubles{1, 0, 1, 2, 1, 0, 1, 0, 1}));
}

// The point below the source's first sample is removed when that sample adds nothing to it.
TEST(ResampleOnto, TheProvisionalFirstPointStaysOnlyWithIntensityBehindIt) {
  const CZRMassSpectrum before = MakeProfile({100, 101, 102, 103, 104}, {1, 2, 3, 2, 1});
  CZRMassSpectrum target = before;
  ResampleOnto(MakeProfile({97.5, 99, 100}, {0, 4, 0}), target);
  EXPECT_EQ(Masses(target), (Doubles{98, 99, 100, 101, 102, 103, 104}));  // 97 is left out
  EXPECT_EQ(Intensities(target), (Doubles{0, 4, 1, 2, 3, 2, 1}));
  target = before;
  ResampleOnto(MakeProfile({97.5, 99, 100}, {4, 4, 0}), target);
  EXPECT_EQ(Masses(target), (Doubles{97, 98, 99, 100, 101, 102, 103, 104}));
  EXPECT_EQ(Intensities(target), (Doubles{2, 2, 4, 1, 2, 3, 2, 1}));
  // The second point has intensity from a later sample: the first stays although it has none.
  target = before;
  ResampleOnto(MakeProfile({97.5, 98.5}, {0, 4}), target);
  EXPECT_EQ(Masses(target), (Doubles{97, 98, 99, 100, 101, 102, 103, 104}));
  EXPECT_EQ(Intensities(target), (Doubles{0, 2, 2, 1, 2, 3, 2, 1}));
  // A first sample at a point of the grid keeps that point, whatever comes next.
  target = before;
  ResampleOnto(MakeProfile({97, 99, 100}, {4, 4, 0}), target);
  EXPECT_EQ(Masses(target), (Doubles{97, 98, 99, 100, 101, 102, 103, 104}));
  EXPECT_EQ(Intensities(target), (Doubles{4, 0, 4, 1, 2, 3, 2, 1}));
}

TEST(ResampleOnto, AttributesStayAndStatisticsAreStale) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104}, {1, 2, 3, 2, 1});
  target.SetPrecursorMass(77);
  target.SetTitle(HostString(L"title"));
  target.EnablePointMarks(true);
  target.UpdateStatistics();
  ResampleOnto(MakeProfile({101.5, 105}, {40, 1}), target);
  EXPECT_EQ(target.GetPrecursorMass(), 77);
  EXPECT_EQ(target.GetTitle(), HostString(L"title"));
  EXPECT_FALSE(target.IsCentroided());
  EXPECT_TRUE(target.HasPointMarks());
  EXPECT_EQ(target.GetBasePeakIntensity(), 23);
}

TEST(AddOntoGrid, ATargetOfFewerThanTwoPointsBecomesTheSource) {
  CZRMassSpectrum target = MakeProfile({5}, {1});
  const CZRMassSpectrum source = MakeProfile({100, 101}, {1, 2});
  AddOntoGrid(source, target, {}, {});
  EXPECT_EQ(Masses(target), Masses(source));
  EXPECT_EQ(Intensities(target), Intensities(source));
}

int released = 0;
void CountRelease(void*, void*) { ++released; }

CZRMassSpectrum OwnerOfOneDatum() {
  static int datum = 0;
  CZRMassSpectrum owner = MakeProfile({100}, {1});
  owner.EnablePointData(true);
  owner.GetPointData()[0] = &datum;
  owner.SetPointDataRelease(CountRelease, nullptr);
  return owner;
}

TEST(AddOntoGrid, ATargetThatBecomesTheSourceDoesNotOwnItsData) {
  released = 0;
  {
    CZRMassSpectrum target = OwnerOfOneDatum();
    const CZRMassSpectrum source = OwnerOfOneDatum();
    AddOntoGrid(source, target, {}, {});
    EXPECT_EQ(released, 1);  // its own
    EXPECT_EQ(target.GetPointData()[0], source.GetPointData()[0]);
    EXPECT_FALSE(target.OwnsPointData());
  }
  EXPECT_EQ(released, 2);
}

TEST(AddOntoGrid, OfOnePointOntoItselfChangesNothing) {
  released = 0;
  {
    CZRMassSpectrum both = OwnerOfOneDatum();
    AddOntoGrid(both, both, {}, {});
    EXPECT_EQ(both.GetCount(), 1);
    EXPECT_TRUE(both.OwnsPointData());
    EXPECT_EQ(released, 0);
  }
  EXPECT_EQ(released, 1);
}

TEST(AddOntoGrid, ATargetOfTwoPointsIsAGrid) {
  CZRMassSpectrum target = MakeProfile({100, 101}, {1, 2});
  SamplingStepModel model;
  ScanLawHolder law;
  BuildStepModel(model, target);
  DetectScanLaw(law, target);
  AddOntoGrid(MakeProfile({100.5, 101.5}, {2, 2}), target, law, model);
  EXPECT_EQ(Masses(target), (Doubles{100, 101, 102}));
  EXPECT_EQ(Intensities(target), (Doubles{2, 4, 1}));
}

TEST(AddOntoGrid, FailedAllocationLeavesTheTargetAsItWas) {
  const CZRMassSpectrum before = MakeProfile({100, 101, 102, 105, 106}, {1, 2, 3, 2, 1});
  const CZRMassSpectrum source = MakeProfile({90.5, 101.5, 112.5}, {1, 1, 1});
  CZRMassSpectrum target = before;
  const auto check = [&] {
    EXPECT_EQ(Masses(target), Masses(before));
    EXPECT_EQ(Intensities(target), Intensities(before));
    EXPECT_EQ(target.GetCount(), 5);
  };
  EXPECT_GT(FailEveryAllocation([&] { ResampleOnto(source, target); }, check), 5);
  EXPECT_EQ(target.GetCount(), 24);  // 90 to 113
  EXPECT_EQ(target.GetTotalIntensity(), 12);
}

// The order of addition: the first spectrum gives the grid, so another order gives different points with the
// same total.
TEST(AddProfileSpectra, TheOrderOfSpectraWithDifferentGridsMattersForThePoints) {
  const CZRMassSpectrum one = MakeProfile({100, 101, 102, 103, 104, 105}, {0, 1, 5, 2, 1, 0});
  const CZRMassSpectrum other = MakeProfile({100.5, 101.75, 103, 104.25, 105.5}, {1, 4, 4, 2, 1});
  CZRMassSpectrum onOne = one;
  CZRMassSpectrum onOther = other;
  AddProfileSpectra(other, onOne);
  AddProfileSpectra(one, onOther);
  EXPECT_EQ(onOne.GetTotalIntensity(), 21);
  EXPECT_NEAR(onOther.GetTotalIntensity(), 21, 1e-12);
  EXPECT_NE(Masses(onOne), Masses(onOther));
}

}  // namespace
}  // namespace zrml
