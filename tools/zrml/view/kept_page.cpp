#include "tools/zrml/view/kept_page.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "convert/base64.h"
#include "tools/zrml/view/page_files.h"
#include "tools/zrml/view/thinning.h"

namespace zrml::view {
namespace {

// What is left out first when all is as small as it can be: the last of these.
enum class Rank { kContents, kTotals, kCurves, kMaps, kSpectra };

struct Kept {
  std::string key;
  Answer answer;
  Rank rank;
  int sample;
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

void Thin(Kept& kept, const Detail& detail) {
  const bool isSpectrum = kept.rank == Rank::kSpectra;
  const bool hasSticks = isSpectrum && kept.answer.facts.value("areCentroids", false);
  Thin(kept.answer.curve, isSpectrum ? std::max<std::size_t>(detail.points / 4, 100) : detail.points,
       hasSticks ? Keep::kLargest : Keep::kBoth);
  Thin(kept.answer.grid, detail.columns, detail.rows);
}

std::string ScriptOf(const Kept& kept) {
  const Numbers numbers = kept.rank == Rank::kSpectra ? Numbers::kShortY : Numbers::kShort;
  return '"' + kept.key + "\":" + ScriptOf(kept.answer, numbers);
}

// Asks all that a page shows.
class Asking {
 public:
  Asking(source::Source& source, const Work& work) : source_(source), work_(work) {}

  std::vector<Kept> AskAll() {
    const Json run = Ask(Rank::kContents, "run", {});
    Ask(Rank::kContents, "findings", {{"points", "1"}});
    samples_ = static_cast<int>(run["samples"].size());
    for (sample_ = 0; sample_ < samples_; ++sample_) AskSample();
    return std::move(kept_);
  }

 private:
  using Values = std::map<std::string, std::string>;

  // The facts of the answer; an error is one, too.
  Json Ask(Rank rank, const std::string& name, Values values) {
    source::ThrowIfCancelled(work_.cancel);
    const Question question(name, std::move(values));
    Kept kept = {question.Text(), {}, rank, sample_};
    try {
      kept.answer = AnswerTo(source_, question, {work_.cancel, PartOfAll()});
    } catch (const source::Error& error) {
      if (name == "run") throw;
      kept.answer.facts = {{"error", error.Message()}};
    }
    Thin(kept, Detail(0));
    Json facts = kept.answer.facts;
    kept_.push_back(std::move(kept));
    return facts;
  }

  Json AskAbout(Rank rank, const std::string& name, Values values) {
    values["sample"] = std::to_string(sample_);
    return Ask(rank, name, std::move(values));
  }

  // A map has the questions' own numbers of cells taken out: the page asks for what it was given.
  void AskMap(const std::string& name, Values values) {
    const Detail most(0);
    Values sized = values;
    sized["columns"] = std::to_string(most.columns);
    sized["rows"] = std::to_string(most.rows);
    AskAbout(Rank::kMaps, name, std::move(sized));
    values["sample"] = std::to_string(sample_);
    kept_.back().key = Question(name, values).Text();
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
  const Work& work_;
  std::vector<Kept> kept_;
  int samples_ = 1;
  int sample_ = 0;
};

// Everything as a member of the object of answers.
struct Written {
  std::vector<std::string> texts;
  std::size_t size = 0;
};

Written WriteAll(const std::vector<Kept>& all) {
  Written written;
  for (const Kept& kept : all) {
    written.texts.push_back(ScriptOf(kept));
    written.size += written.texts.back().size() + 1;
  }
  return written;
}

// What goes first: by rank from the last one on, and of those the last samples.
std::vector<std::size_t> OrderOfLeaving(const std::vector<Kept>& all) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < all.size(); ++i) order.push_back(i);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return all[a].rank != all[b].rank ? all[a].rank > all[b].rank : all[a].sample > all[b].sample;
  });
  return order;
}

bool IsNeeded(const Kept& kept) { return kept.key.starts_with("run") || kept.key.starts_with("findings"); }

// The answers as a JSON object of at most `room` bytes.
std::string AnswersScript(std::vector<Kept> all, std::size_t room) {
  Written written = WriteAll(all);
  int level = 0;
  while (written.size > room && level < kLastLevel) {
    const Detail detail(++level);
    for (Kept& kept : all) Thin(kept, detail);
    written = WriteAll(all);
  }
  std::size_t leftOut = 0;
  for (const std::size_t i : OrderOfLeaving(all)) {
    if (written.size <= room) break;
    if (IsNeeded(all[i])) continue;
    written.size -= written.texts[i].size() + 1;
    written.texts[i].clear();
    ++leftOut;
  }
  std::string script = "{\"isThinned\":" + std::string(level > 0 ? "true" : "false") +
                       ",\"leftOut\":" + std::to_string(leftOut) + ",\"answers\":{";
  const char* separator = "";
  for (const std::string& text : written.texts) {
    if (text.empty()) continue;
    script.append(separator).append(text);
    separator = ",";
  }
  return script + "}}";
}

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
  const std::string answers =
      AnswersScript(Asking(source, work).AskAll(), maxSize > taken ? maxSize - taken : 0);
  return head + Element("script", answers, " type=\"application/json\" id=\"kept\"") + end;
}

std::string LivePage() {
  return Head("") + "<link rel=\"stylesheet\" href=\"/page.css\">\n" + kBody +
         "<script src=\"/uplot.js\"></script>\n<script src=\"/page.js\"></script>\n</body>\n</html>\n";
}

}  // namespace zrml::view
