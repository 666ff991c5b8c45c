// Where things are in a report: samples, the functions of a sample, the spectra and chromatograms of a
// function. Each level is looked for when it is needed, and only positions are kept.
//
// Blocks that were never closed lie in each other, and what is in the inner one is in the outer ones, too. So
// functions hold runs of lists that their sample holds, and functions that lie in each other are looked
// through together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "openlynx/report_stream.h"

namespace zrml {

/// Items [first, last) of a list of the sample.
struct Run {
  std::size_t first = 0;
  std::size_t last = 0;

  std::size_t Size() const { return last - first; }
};

/// Number of a text of the sample: 0 is the empty one.
using TextNumber = std::size_t;
inline constexpr TextNumber kUnreadText = static_cast<TextNumber>(-1);

/// A function that is not analog.
struct ReportFunctionRecord {
  std::uint64_t position = 0;  // of the "[FUNCTION]" line
  std::uint64_t group = 0;     // of the first of the functions that may lie in each other
  bool blocksIndexed = false;  // set once a block of either kind is found
  bool blocksSought = false;   // in vain, unless they are indexed
  // Until the blocks are indexed, what was found when another function was looked through.
  Run spectra;
  Run chromatograms;

  // The function's own keys, once they have been asked for. A further open forgets them.
  TextNumber description = kUnreadText;
  TextNumber type = kUnreadText;
  TextNumber ionMode = kUnreadText;

  bool HasBlocks() const { return spectra.Size() > 0 || chromatograms.Size() > 0; }
};

/// The "[CHROMATOGRAM]" lines of a sample's analog functions, by function, as often as they were looked for.
class AnalogTraces {
 public:
  /// What one look finds: runs of `positions`, one for each function.
  struct Look {
    std::vector<std::uint64_t> positions;
    std::vector<Run> runs;

    bool operator==(const Look& other) const;
  };

  void Add(Look look);

  /// Adds what the last look found once more.
  void AddAgain() { count_ += lastCount_; }

  std::size_t Count() const { return count_; }

  /// No value for a number that is not below Count().
  std::optional<std::uint64_t> Position(std::size_t number) const;

 private:
  // A look, and any number of further ones with the same result.
  struct Looks {
    Look look;
    std::vector<std::size_t> ends;  // of the runs, counted from the first
    std::size_t first = 0;          // number of the first trace
  };

  std::vector<Looks> looks_;
  std::size_t lastCount_ = 0;
  std::size_t count_ = 0;
};

struct ReportSampleRecord {
  std::uint64_t position = 0;           // of the "[SAMPLE]" line
  bool functionsIndexed = false;        // set once a function is found
  bool functionsSought = false;         // in vain, unless they are indexed
  std::uint64_t end = 0;                // behind the last byte that was looked at in vain, and one more
  std::optional<std::uint64_t> digest;  // of the bytes up to there, once they were looked at again
  std::vector<ReportFunctionRecord> functions;
  AnalogTraces analogTraces;

  std::vector<std::uint64_t> spectra;        // the "[SPECTRUM]" lines of functions
  std::vector<std::uint64_t> chromatograms;  // the "[CHROMATOGRAM]" lines of functions
  std::vector<std::string> texts;            // values of keys of functions

  /// Of a number that has been read.
  std::string_view Text(TextNumber number) const;
  std::span<const std::uint64_t> SpectraOf(const ReportFunctionRecord& function) const;

  /// The functions that may lie in this one, or this one in them; itself is among them.
  std::span<ReportFunctionRecord> GroupOf(const ReportFunctionRecord& function);

  /// Forgets what is in the file but the positions that have been asked for.
  void Forget();
};

/// Every "[SAMPLE]" line of the report, inside blocks too.
std::vector<ReportSampleRecord> FindSamples(ReportStream& stream);

/// Adds the sample's functions and analog traces. A sample that still has no function afterwards is not
/// marked as indexed: each further pass deliberately adds its analog traces once more. Passes over the same
/// bytes are not walked again.
void IndexFunctions(ReportStream& stream, ReportSampleRecord& sample);

/// Finds the function's blocks unless that has been done.
void IndexBlocks(ReportStream& stream, ReportSampleRecord& sample, ReportFunctionRecord& function);

/// The same for all functions of the sample.
void IndexAllBlocks(ReportStream& stream, ReportSampleRecord& sample);

/// Reads "Description" and "Type" of the function, or its "IonMode", unless that has been done.
void ReadNames(ReportStream& stream, ReportSampleRecord& sample, const ReportFunctionRecord& function);
void ReadIonMode(ReportStream& stream, ReportSampleRecord& sample, const ReportFunctionRecord& function);

}  // namespace zrml
