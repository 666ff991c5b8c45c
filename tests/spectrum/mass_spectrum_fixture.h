// Shared by the tests of the mass spectrum.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/mass_spectrum.h"
#include "tests/spectrum/contract_member.h"

namespace zrml {

using HostDoubles = HostVector<double>;

inline constexpr double kLargest = std::numeric_limits<double>::max();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

inline CZRMassSpectrum MakeSpectrum(const HostDoubles& masses, const HostDoubles& intensities) {
  CZRMassSpectrum spectrum;
  spectrum.AssignMasses(masses);
  spectrum.AssignIntensities(intensities);
  spectrum.SetSize(static_cast<int>(masses.size()));
  return spectrum;
}

/// The lengths of the six point arrays: masses, intensities, flags, data, values, marks.
inline std::vector<std::size_t> Lengths(CZRMassSpectrum& s) {
  return {s.MassVector().size(),
          s.IntensityVector().size(),
          ContractMember<HostVector<std::uint8_t>>(s, 56).size(),
          ContractMember<HostVector<void*>>(s, 80).size(),
          ContractMember<HostVector<std::int32_t>>(s, 104).size(),
          ContractMember<HostVector<std::uint8_t>>(s, 128).size()};
}

inline std::vector<bool> PresenceFlags(const CZRMassSpectrum& s) {
  return {s.HasPointFlags(), s.HasPointData(), s.HasPointValues(), s.HasPointMarks()};
}

/// One member at its offset in the contract, with functions to change it and to check for the changed value.
struct MemberCase {
  const char* name;
  void (*change)(CZRMassSpectrum&);
  bool (*isChanged)(CZRMassSpectrum&);
};

template <class T, std::size_t offset>
MemberCase Number(const char* name) {
  return {name, [](CZRMassSpectrum& s) { ContractMember<T>(s, offset) = static_cast<T>(7); },
          [](CZRMassSpectrum& s) { return ContractMember<T>(s, offset) == static_cast<T>(7); }};
}

template <std::size_t offset>
MemberCase Flag(const char* name, bool (*initial)()) {
  return initial() ? MemberCase{name, [](CZRMassSpectrum& s) { ContractMember<bool>(s, offset) = false; },
                                [](CZRMassSpectrum& s) { return !ContractMember<bool>(s, offset); }}
                   : MemberCase{name, [](CZRMassSpectrum& s) { ContractMember<bool>(s, offset) = true; },
                                [](CZRMassSpectrum& s) { return ContractMember<bool>(s, offset); }};
}

template <std::size_t offset>
MemberCase Text(const char* name) {
  return {name,
          [](CZRMassSpectrum& s) { ContractMember<HostString>(s, offset) = L"a text of more than seven"; },
          [](CZRMassSpectrum& s) {
            return ContractMember<HostString>(s, offset) == L"a text of more than seven";
          }};
}

template <class T, std::size_t offset>
MemberCase Vector(const char* name) {
  return {name, [](CZRMassSpectrum& s) { ContractMember<HostVector<T>>(s, offset).resize(5); },
          [](CZRMassSpectrum& s) { return ContractMember<HostVector<T>>(s, offset).size() == 5; }};
}

inline bool True() { return true; }

/// The members that CopyAttributes copies, whatever the points.
inline const std::vector<MemberCase> kAttributes = {
    Text<160>("title"),
    Flag<192>("centroided", True),
    Flag<193>("statistics stale", True),
    Number<double, 200>("total intensity"),
    Number<double, 208>("base peak mass"),
    Number<double, 216>("base peak intensity"),
    Number<double, 224>("min intensity"),
    Number<std::int32_t, 232>("base peak index"),
    Number<std::int32_t, 236>("MS level"),
    Number<double, 240>("precursor mass"),
    Number<std::int16_t, 248>("precursor companion"),
    Number<std::int32_t, 252>("polarity"),
    Vector<SpectrumPair, 256>("reserved pairs"),
    Vector<double, 280>("reserved values"),
    Number<std::int32_t, 304>("scan type"),
    Number<double, 384>("start time"),
    Number<double, 392>("end time"),
    Number<double, 400>("first drift value"),
    Number<double, 408>("last drift value"),
    Number<std::int32_t, 416>("first scan"),
    Number<std::int32_t, 420>("last scan"),
    Number<std::int32_t, 424>("first drift bin"),
    Number<std::int32_t, 428>("last drift bin"),
    Text<480>("label"),
    Number<double, 512>("aux value"),
    Number<std::uint8_t, 520>("reserved byte"),
    Number<double, 528>("scale"),
    Number<std::int64_t, 536>("reserved word"),
};

/// The further members that copying a whole spectrum copies.
inline const std::vector<MemberCase> kWholeCopyOnly = {
    Vector<double, 312>("uncopied vector 1"),
    Vector<double, 336>("uncopied vector 2"),
    Vector<double, 360>("uncopied vector 3"),
    {"release function", [](CZRMassSpectrum& s) { s.SetPointDataRelease([](void*, void*) {}, nullptr); },
     [](CZRMassSpectrum& s) { return ContractMember<std::int64_t>(s, 432) != 0; }},
    Number<std::int64_t, 440>("release context"),
};

/// The points: masses, intensities, the optional arrays, count and presence flags.
inline CZRMassSpectrum WithAllArrays() {
  CZRMassSpectrum s = MakeSpectrum({100, 200}, {3, 4});
  s.Resize(2, true, true, true, true);
  s.GetPointFlags()[1] = 11;
  s.GetPointData()[1] = &s;
  s.GetPointValues()[1] = -12;
  s.GetPointMarks()[1] = 13;
  return s;
}

inline void ExpectSamePoints(CZRMassSpectrum& a, CZRMassSpectrum& b) {
  EXPECT_EQ(a.GetCount(), b.GetCount());
  EXPECT_EQ(a.MassVector(), b.MassVector());
  EXPECT_EQ(a.IntensityVector(), b.IntensityVector());
  EXPECT_EQ(PresenceFlags(a), PresenceFlags(b));
  for (const std::size_t offset : {56, 128}) {
    EXPECT_EQ(ContractMember<HostVector<std::uint8_t>>(a, offset),
              ContractMember<HostVector<std::uint8_t>>(b, offset));
  }
  EXPECT_EQ(ContractMember<HostVector<void*>>(a, 80), ContractMember<HostVector<void*>>(b, 80));
  EXPECT_EQ(ContractMember<HostVector<std::int32_t>>(a, 104),
            ContractMember<HostVector<std::int32_t>>(b, 104));
}

}  // namespace zrml
