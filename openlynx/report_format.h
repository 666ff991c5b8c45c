// OpenLynx reports, "*.rpt": lines of text in nested blocks, each introduced by a marker line.
// docs/openlynx-report.md
#pragma once

#include <cstddef>
#include <string_view>

namespace zrml::openlynx::report_format {

/// A line is read in pieces of at most this many bytes; each piece counts as a separate line.
inline constexpr std::size_t kPieceSize = 999;

// Markers of blocks and data lists, at the start of a line. Text after a marker is ignored.
inline constexpr std::string_view kSample = "[SAMPLE]";
inline constexpr std::string_view kFunction = "[FUNCTION]";
inline constexpr std::string_view kSpectrum = "[SPECTRUM]";
inline constexpr std::string_view kChromatogram = "[CHROMATOGRAM]";
inline constexpr std::string_view kMassList = "[MS]";
inline constexpr std::string_view kTraceList = "[TRACE]";

// First characters of lines.
inline constexpr char kBracket = '[';  // a marker
inline constexpr char kOpen = '{';     // begins a block
inline constexpr char kClose = '}';    // ends a block or a data list
inline constexpr char kComment = ';';  // in data lists

// Keys. No key is a prefix of another: the result for one key does not depend on the others searched with it.
inline constexpr std::string_view kBpiKey = "BPI";                    // spectrum: base peak intensity
inline constexpr std::string_view kContinuumKey = "Continuum";        // spectrum
inline constexpr std::string_view kDateKey = "Date";                  // sample
inline constexpr std::string_view kDescriptionKey = "Description";    // function, chromatogram
inline constexpr std::string_view kFileNameKey = "FileName";          // sample
inline constexpr std::string_view kInstrumentKey = "Instrument";      // sample
inline constexpr std::string_view kIonModeKey = "IonMode";            // function
inline constexpr std::string_view kMaxIntensityKey = "MaxIntensity";  // chromatogram
inline constexpr std::string_view kProcessKey = "Process";            // spectrum: what it was made by
inline constexpr std::string_view kSampleIdKey = "SampleID";          // sample
inline constexpr std::string_view kTicKey = "TIC";                    // spectrum: total ion current
inline constexpr std::string_view kTimeKey = "Time";                  // sample, spectrum
inline constexpr std::string_view kTypeKey = "Type";                  // function
inline constexpr std::string_view kUserNameKey = "UserName";          // sample

inline constexpr std::string_view kAllKeys[] = {
    kBpiKey,     kContinuumKey,    kDateKey,     kDescriptionKey, kFileNameKey, kInstrumentKey, kIonModeKey,
    kProcessKey, kMaxIntensityKey, kSampleIdKey, kTicKey,         kTimeKey,     kTypeKey,       kUserNameKey,
};

// Values. Of Continuum only FALSE counts to hosts, deliberately: anything else means continuum.
inline constexpr std::string_view kCentroided = "FALSE";
inline constexpr std::string_view kContinuum = "TRUE";
inline constexpr std::string_view kAnalogMark = "ANALOG";  // in Description: an analog function
inline constexpr std::string_view kDadMark = "DAD";        // in Type: the same

// Words of Type, or of Description where there is no Type, that say what is measured is absorbance.
inline constexpr std::string_view kAbsorbanceWords[] = {"absorbance", "diode", "pda", "tuv", "uv", "vis"};

/// Intensities are in percent of BPI or MaxIntensity. This value replaces a missing or zero one.
inline constexpr double kFullScale = 100.0;

}  // namespace zrml::openlynx::report_format
