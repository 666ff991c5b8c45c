#include "tools/zrml/view/kept_page.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <optional>
#include <set>
#include <span>
#include <tuple>

#include "convert/base64.h"
#include "tools/zrml/view/page_files.h"
#include "tools/zrml/view/thinning.h"

namespace zrml::view {
namespace {

// What is left out first when all is as small as it can be: the last of these.
enum class Rank { kContents, kTotals, kCurves, kMaps, kSpectra };

struct Kept {
  std::string key = {};
  Answer answer = {};
  Rank rank = Rank::kContents;
  int sample = 0;
};

// How much is kept at a level of detail; each level halves the numbers of the one before.
struct Detail {
  explicit Detail(int level)
      : points(std::max<std::size_t>(std::size_t{kMostPoints} >> level, 200)),
        columns(std::max(static_cast<int>(1200 / std::exp2(level / 2.0)), 60)),
        rows(std::max(static_cast<int>(500 / std::exp2(level / 2.0)), 40)) {}

  std::size_t points;
  int columns;
  int rows;
};

constexpr int kLastLevel = 10;

// Whether that changes anything.
bool Thin(Kept& kept, const Detail& detail) {
  const bool isSpectrum = kept.rank == Rank::kSpectra;
  const bool hasSticks = isSpectrum && kept.answer.facts.value("areCentroids", false);
  const std::size_t before = kept.answer.curve.y.size() + kept.answer.grid.cells.size();
  Thin(kept.answer.curve, isSpectrum ? std::max<std::size_t>(detail.points / 4, 100) : detail.points,
       hasSticks ? Keep::kLargest : Keep::kBoth);
  Thin(kept.answer.grid, detail.columns, detail.rows);
  return kept.answer.curve.y.size() + kept.answer.grid.cells.size() != before;
}

std::string ScriptOf(const Kept& kept) {
  const Numbers numbers = kept.rank == Rank::kSpectra ? Numbers::kShortY : Numbers::kShort;
  return '"' + kept.key + "\":" + ScriptOf(kept.answer, numbers);
}

bool IsNeeded(const Kept& kept) { return kept.key.starts_with("run") || kept.key.starts_with("findings"); }

// Answers as the members of a JSON object of at most `room` bytes, if that can be. There is never more in
// memory than fits: less detail, or fewer answers, once there is no room for all that have come so far.
class Fitting {
 public:
  explicit Fitting(std::size_t room) : room_(room) {}

  /// Whether what is left out before this one leaves room for it.
  bool MayHave(Rank rank, int sample) const {
    return !lastPlace_ || Place{rank, sample, -std::ssize(items_)} < *lastPlace_;
  }

  void LeaveOut() { ++leftOut_; }

  void Add(Kept kept) {
    if (!IsNeeded(kept) && !MayHave(kept.rank, kept.sample)) return LeaveOut();
    for (int level = 0; level <= level_; ++level) Thin(kept, Detail(level));
    if (!IsNeeded(kept)) leaving_.insert({kept.rank, kept.sample, -std::ssize(items_)});
    items_.push_back({std::move(kept), {}});
    Write(items_.back());
    while (size_ > room_ && level_ < kLastLevel) ThinMore();
    while (size_ > room_ && !leaving_.empty()) LeaveOutLast();
  }

  std::string Script() const {
    std::string script = "{\"isThinned\":" + std::string(level_ > 0 ? "true" : "false") +
                         ",\"leftOut\":" + std::to_string(leftOut_) + ",\"answers\":{";
    const char* separator = "";
    for (const Item& item : items_) {
      if (item.text.empty()) continue;
      script.append(separator).append(item.text);
      separator = ",";
    }
    return script + "}}";
  }

 private:
  struct Item {
    Kept kept;
    std::string text;
  };
  // The last one leaves first: by rank, of these the last sample, of these what came first.
  using Place = std::tuple<Rank, int, std::ptrdiff_t>;

  void Write(Item& item) {
    size_ -= item.text.empty() ? 0 : item.text.size() + 1;
    item.text = ScriptOf(item.kept);
    size_ += item.text.size() + 1;
  }

  void ThinMore() {
    const Detail detail(++level_);
    for (Item& item : items_) {
      if (Thin(item.kept, detail)) Write(item);
    }
  }

  void LeaveOutLast() {
    lastPlace_ = *leaving_.rbegin();
    leaving_.erase(*lastPlace_);
    Item& item = items_[static_cast<std::size_t>(-std::get<std::ptrdiff_t>(*lastPlace_))];
    size_ -= item.text.size() + 1;
    item = {};
    LeaveOut();
  }

  std::size_t room_;
  std::deque<Item> items_;
  std::set<Place> leaving_;
  std::optional<Place> lastPlace_;  // of what has been left out the first
  std::size_t size_ = 0;
  int level_ = 0;
  std::size_t leftOut_ = 0;
};

// Asks all that a page shows.
class Asking {
 public:
  Asking(source::Source& source, Fitting& fitting, const Work& work)
      : source_(source), fitting_(fitting), work_(work) {}

  void AskAll() {
    const Json run = Ask(Rank::kContents, "run", {});
    Ask(Rank::kContents, "findings", {{"points", "1"}});
    samples_ = static_cast<int>(run["samples"].size());
    for (sample_ = 0; sample_ < samples_; ++sample_) AskSample();
  }

 private:
  using Values = std::map<std::string, std::string>;

  // The facts of the answer; an error is one, too; none of a map or a spectrum without room. The page asks
  // without the detail.
  Json Ask(Rank rank, const std::string& name, const Values& values, const Values& detail = {}) {
    source::ThrowIfCancelled(work_.cancel);
    if (rank >= Rank::kMaps && !fitting_.MayHave(rank, sample_)) {
      fitting_.LeaveOut();
      return {};
    }
    Kept kept = {Question(name, values).Text(), {}, rank, sample_};
    Values all = values;
    all.insert(detail.begin(), detail.end());
    const Question question(name, std::move(all));
    try {
      kept.answer = AnswerTo(source_, question, {work_.cancel, PartOfAll()});
    } catch (const source::Error& error) {
      if (name == "run") throw;
      kept.answer.facts = {{"error", error.Message()}};
    }
    Json facts = kept.answer.facts;
    fitting_.Add(std::move(kept));
    return facts;
  }

  Json AskAbout(Rank rank, const std::string& name, Values values, const Values& detail = {}) {
    values["sample"] = std::to_string(sample_);
    return Ask(rank, name, values, detail);
  }

  void AskMap(const std::string& name, const Values& values) {
    const Detail most(0);
    AskAbout(Rank::kMaps, name, values,
             {{"columns", std::to_string(most.columns)}, {"rows", std::to_string(most.rows)}});
  }

  void AskSample() {
    const Json sample = AskAbout(Rank::kContents, "sample", {});
    if (sample.contains("error")) return;
    for (const Json& function : sample["functions"]) AskFunction(function);
    for (std::size_t i = 0; i < sample["traces"].size(); ++i)
      AskAbout(Rank::kCurves, "trace", {{"trace", std::to_string(i)}});
    if (!sample["absorbance"].is_null()) AskAbsorbance();
  }

  void AskFunction(const Json& function) {
    const std::string position = std::to_string(function["position"].get<int>());
    for (std::size_t i = 0; i < function["traces"].size(); ++i)
      AskAbout(Rank::kCurves, "trace", {{"function", position}, {"trace", std::to_string(i)}});
    if (function["scans"].get<int>() == 0) return;
    AskAbout(Rank::kTotals, "chromatogram", {{"function", position}, {"kind", "tic"}});
    AskAbout(Rank::kCurves, "chromatogram", {{"function", position}, {"kind", "bpc"}});
    if (!function["isMonitoring"].get<bool>()) AskMap("map", {{"function", position}});
    const Json peaks = AskAbout(Rank::kCurves, "peaks", {{"function", position}});
    if (peaks.contains("error")) return;
    if (function["driftBins"].get<int>() > 0 && !peaks["peaks"].empty()) {
      const int scan = peaks["peaks"][0]["scan"].get<int>();
      AskMap("drift-map", {{"function", position}, {"scan", std::to_string(scan)}});
    }
    for (const Json& peak : peaks["peaks"]) {
      AskAbout(Rank::kSpectra, "spectrum",
               {{"function", position}, {"scan", std::to_string(peak["scan"].get<int>())}});
    }
  }

  // Its chromatogram is that of the wavelength with the largest value.
  void AskAbsorbance() {
    const Json largest = AskAbout(Rank::kCurves, "absorbance-largest", {});
    AskMap("absorbance-map", {});
    if (!largest.contains("scan")) return;
    AskAbout(Rank::kSpectra, "absorbance", {{"scan", std::to_string(largest["scan"].get<int>())}});
  }

  // Findings take about as long as each of the passes over a function; a few parts per sample will do.
  source::Progress PartOfAll() const {
    if (!work_.progress) return {};
    const auto samples = static_cast<std::uint64_t>(std::max(samples_, 1));
    const auto before = static_cast<std::uint64_t>(sample_);
    return [this, before, samples](std::uint64_t done, std::uint64_t all) {
      constexpr std::uint64_t kParts = 100;
      work_.progress(before * kParts + kParts * done / std::max<std::uint64_t>(all, 1), samples * kParts);
    };
  }

  source::Source& source_;
  Fitting& fitting_;
  const Work& work_;
  int samples_ = 1;
  int sample_ = 0;
};

std::string PolicySource(const PageFile& file) {
  std::vector<std::byte> bytes;
  for (std::size_t i = 0; i < file.sha256.size(); i += 2)
    bytes.push_back(static_cast<std::byte>(std::stoi(std::string(file.sha256.substr(i, 2)), nullptr, 16)));
  std::string source = " 'sha256-";
  convert::AppendBase64(bytes, source);
  return source + "'";
}

std::string Head(const std::string& extra) {
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n" + extra +
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=\"referrer\" content=\"no-referrer\">\n<link rel=\"icon\" href=\"data:,\">\n"
         "<title>zrml</title>\n";
}

constexpr const char* kBody =
    "</head>\n<body>\n<noscript>This page draws its data with a script.</noscript>\n<div "
    "id=\"page\"></div>\n";

std::string Element(const std::string& name, std::string_view text, const std::string& attributes = "") {
  return "<" + name + attributes + ">" + std::string(text) + "</" + name + ">\n";
}

std::string KeptHead() {
  return Head("<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src" +
              PolicySource(kPlotScript) + PolicySource(kPageScript) + "; style-src" +
              PolicySource(kPageStyle) + "; img-src data: blob:; base-uri 'none'; form-action 'none'\">\n") +
         Element("style", kPageStyle.text) + kBody;
}

std::string KeptEnd() {
  return Element("script", kPlotScript.text) + Element("script", kPageScript.text) + "</body>\n</html>\n";
}

}  // namespace

std::string MakeKeptPage(source::Source& source, std::size_t maxSize, const Work& work) {
  constexpr std::size_t kAround = 200;  // the element and what is around the answers
  const std::string head = KeptHead();
  const std::string end = KeptEnd();
  const std::size_t taken = head.size() + end.size() + kAround;
  Fitting fitting(maxSize > taken ? maxSize - taken : 0);
  Asking(source, fitting, work).AskAll();
  return head + Element("script", fitting.Script(), " type=\"application/json\" id=\"kept\"") + end;
}

std::string LivePage() {
  return Head("") + "<link rel=\"stylesheet\" href=\"/page.css\">\n" + kBody +
         "<script src=\"/uplot.js\"></script>\n<script src=\"/page.js\"></script>\n</body>\n</html>\n";
}

}  // namespace zrml::view
