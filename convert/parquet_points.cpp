// Parquet: a row per point, with what is known of its scan. Renderers make pages of the points of some scans;
// the document gathers them in row groups, and adds what repeats from scan to scan. docs/parquet.md
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "convert/parquet/page.h"
#include "convert/parquet/repeated_column.h"
#include "convert/parquet/run_encoder.h"
#include "convert/parquet/table_file.h"
#include "convert/single_precision.h"
#include "convert/spectrum_reader.h"
#include "convert/writer.h"
#include "source/names.h"

namespace zrml::convert {
namespace {

using parquet::Column;
using parquet::Type;

constexpr std::size_t kGroupRows = 1u << 20;  // at most, and of one function

// Also their order.
enum ColumnPlace : std::size_t {
  kScan,
  kLevel,
  kTime,
  kMass,
  kIntensity,
  kMobility,
  kIsolationLow,
  kIsolationHigh,
  kPrecursorScan,
  kPrecursorMass,
  kPrecursorCharge,
  kFunction,
  kFunctionScan,
  kPolarity,
};

std::vector<Column> ColumnsOf(const ParquetPlan& plan) {
  return {
      {"scan", Type::kInt32, false},
      {"level", Type::kInt32, false},
      {"rt", plan.time, true},
      {"mz", plan.mass, false},
      {"intensity", plan.intensity, false},
      {"ion_mobility", Type::kFloat, true},
      // No file has these, but programs ask for them.
      {"isolation_lower", Type::kFloat, true},
      {"isolation_upper", Type::kFloat, true},
      {"precursor_scan", Type::kInt32, true},
      {"precursor_mz", plan.precursor, true},
      {"precursor_charge", Type::kInt32, true},
      {"function", Type::kText, false},
      {"function_scan", Type::kInt32, false},
      {"polarity", Type::kText, true},
  };
}

// Columns whose pages are made by renderers; the last one only where there are drift bins.
constexpr std::array kPointColumns = {kMass, kIntensity, kMobility};

std::span<const ColumnPlace> PointColumns(const RunFunction& function) {
  return std::span(kPointColumns).first(function.driftBins > 0 ? 3 : 2);
}

// A rendered batch: its scans, then for each page a head and bytes for each of the point columns.
struct BatchHead {
  std::uint64_t scans;
  std::uint64_t pages;
};
struct ScanRows {
  std::uint64_t rows;
  double precursor;
};
struct PageHead {
  std::uint64_t rows;
  std::uint64_t plainSize;
  std::uint64_t size;
  double low;  // larger than `high` where no value is a number
  double high;
};

template <class Value>
void AppendValue(const Value& value, std::string& text) {
  text.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <class Value>
Value TakeValue(std::string_view& text) {
  Value value;
  std::memcpy(&value, text.data(), sizeof value);
  text.remove_prefix(sizeof value);
  return value;
}

// Makes pages of numbers for one worker.
class PageMaker {
 public:
  explicit PageMaker(const ArrayOptions& options)
      : deflater_(options.MakeDeflater(Deflater::Wrapper::kGzip)) {}

  void Append(const Column& column, std::span<const double> values, std::string& text) {
    body_ = column.isOptional ? FrontOfAll(values.size()) : std::string();
    AppendNumbers(column.type, values);
    page_.clear();
    const std::size_t plainSize =
        parquet::AppendDataPage({values.size(), parquet::Encoding::kPlain, body_}, Deflating(), page_);
    const auto [low, high] = BoundsOf(values);
    AppendValue(PageHead{values.size(), plainSize, page_.size(), low, high}, text);
    text += page_;
  }

 private:
  static std::string FrontOfAll(std::size_t rows) {
    std::string levels;
    parquet::RunEncoder encoder(1, levels);
    encoder.Add(1, rows);
    encoder.Finish();
    return parquet::FrontOf(levels);
  }

  static source::Range BoundsOf(std::span<const double> values) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    source::Range range = {kInfinity, -kInfinity};
    for (const double value : values) {
      range.low = value < range.low ? value : range.low;
      range.high = value > range.high ? value : range.high;
    }
    return range;
  }

  void AppendNumbers(Type type, std::span<const double> values) {
    std::span<const std::byte> bytes = std::as_bytes(values);
    if (type == Type::kFloat) {
      RoundToSingle(values, singles_);
      bytes = std::as_bytes(std::span(singles_));
    }
    body_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }

  Deflater* Deflating() { return deflater_ ? &*deflater_ : nullptr; }

  std::optional<Deflater> deflater_;
  std::vector<float> singles_;
  std::string body_;
  std::string page_;
};

class ParquetRenderer : public Renderer {
 public:
  ParquetRenderer(source::Source& source, const RunPlan& plan, const ParquetPlan& parquet, Losses& losses,
                  const ArrayOptions& arrays)
      : reader_(source, plan, losses), parquet_(parquet), columns_(ColumnsOf(parquet)), pages_(arrays) {}

  void Render(std::size_t batch, std::string& text) override {
    const std::size_t begin = parquet_.BeginOf(batch);
    scans_.clear();
    for (std::vector<double>& values : values_) values.clear();
    for (std::size_t i = begin; i < parquet_.ends[batch]; ++i) Gather(reader_.Plan().entries[i]);
    const std::size_t rows = values_.front().size();
    text.clear();
    AppendValue(BatchHead{scans_.size(), (rows + kGroupRows - 1) / kGroupRows}, text);
    for (const ScanRows& scan : scans_) AppendValue(scan, text);
    const RunFunction& function = reader_.Plan().FunctionOf(reader_.Plan().entries[begin]);
    for (std::size_t row = 0; row < rows; row += kGroupRows)
      AppendPages(PointColumns(function), row, std::min(rows - row, kGroupRows), text);
  }

 private:
  void Gather(const RunEntry& entry) {
    const Spectrum spectrum = reader_.ReadMassOrDrift(entry);
    const std::array read = {spectrum.positions, spectrum.intensities, spectrum.bins};
    for (std::size_t i = 0; i < read.size(); ++i)
      values_[i].insert(values_[i].end(), read[i].begin(), read[i].end());
    scans_.push_back({spectrum.positions.size(), spectrum.scan.precursorMz.value_or(0)});
  }

  void AppendPages(std::span<const ColumnPlace> columns, std::size_t row, std::size_t rows,
                   std::string& text) {
    for (std::size_t i = 0; i < columns.size(); ++i)
      pages_.Append(columns_[columns[i]], std::span(values_[i]).subspan(row, rows), text);
  }

  SpectrumReader reader_;
  const ParquetPlan& parquet_;
  std::vector<Column> columns_;
  PageMaker pages_;
  std::vector<ScanRows> scans_;
  std::array<std::vector<double>, kPointColumns.size()> values_;  // of the point columns
};

class ParquetDocument : public Document {
 public:
  ParquetDocument(const RunPlan& plan, const ParquetPlan& parquet, const ArrayOptions& arrays, ByteSink& out)
      : plan_(plan),
        parquet_(parquet),
        columns_(ColumnsOf(parquet)),
        repeated_(columns_.begin(), columns_.end()),
        points_(columns_.size()),
        file_(columns_, out),
        deflater_(arrays.MakeDeflater(Deflater::Wrapper::kGzip)) {}

  void Begin() override { file_.Begin(); }

  void Add(std::string_view text) override {
    const std::size_t begin = parquet_.BeginOf(batch_++);
    const RunFunction& function = plan_.FunctionOf(plan_.entries[begin]);
    if (&function != function_) EndGroup();
    function_ = &function;
    const auto head = TakeValue<BatchHead>(text);
    std::vector<ScanRows> scans(head.scans);
    for (ScanRows& scan : scans) scan = TakeValue<ScanRows>(text);
    std::size_t scan = 0;
    for (std::uint64_t page = 0; page < head.pages; ++page) {
      const std::size_t rows = AddPages(text);
      for (std::size_t left = rows; left > 0;) {
        const std::size_t taken = std::min<std::size_t>(left, scans[scan].rows);
        AddRows(begin + scan, scans[scan].precursor, taken);
        scans[scan].rows -= taken;
        left -= taken;
        if (scans[scan].rows == 0) ++scan;
      }
    }
  }

  void End() override {
    EndGroup();
    file_.End();
  }

 private:
  // One of each point column, from the front of `text`. The number of its rows.
  std::size_t AddPages(std::string_view& text) {
    std::size_t rows = 0;
    for (const ColumnPlace place : PointColumns(*function_)) {
      const auto page = TakeValue<PageHead>(text);
      if (place == kPointColumns.front() && points_[place].rows + page.rows > kGroupRows) EndGroup();
      parquet::Chunk& chunk = points_[place];
      chunk.pages += text.substr(0, page.size);
      text.remove_prefix(page.size);
      chunk.plainSize += page.plainSize;
      chunk.rows += page.rows;
      rows = page.rows;
      if (page.low > page.high) continue;
      const Type type = columns_[place].type;
      chunk.bounds.Widen(type, PlainNumber(type, page.low));
      chunk.bounds.Widen(type, PlainNumber(type, page.high));
    }
    return rows;
  }

  // What the rows of an entry share.
  void AddRows(std::size_t index, double precursor, std::size_t rows) {
    const RunEntry& entry = plan_.entries[index];
    const source::Function& function = function_->info;
    AddNumber(kScan, static_cast<double>(index + 1), rows);
    AddNumber(kLevel, MsLevelOf(function).value_or(0), rows);
    AddNumber(kTime, entry.minutes, rows);
    AddNumber(kPrecursorMass, precursor == 0 ? std::numeric_limits<double>::quiet_NaN() : precursor, rows);
    AddText(kFunction, TextOf(function.id), rows);
    AddNumber(kFunctionScan, entry.scan + 1.0, rows);
    const bool hasPolarity = function.polarity != source::Polarity::kUnknown;
    AddText(kPolarity, hasPolarity ? source::NameOf(function.polarity) : std::string_view(), rows);
    for (const ColumnPlace place : {kIsolationLow, kIsolationHigh, kPrecursorScan, kPrecursorCharge})
      repeated_[place].Add({}, rows);
    if (function_->driftBins == 0) repeated_[kMobility].Add({}, rows);
  }

  // Absent unless it is finite.
  void AddNumber(ColumnPlace place, double value, std::size_t rows) {
    const std::string plain = std::isfinite(value) ? PlainNumber(columns_[place].type, value) : std::string();
    repeated_[place].Add(plain, rows);
  }

  void AddText(ColumnPlace place, std::string_view text, std::size_t rows) {
    repeated_[place].Add(text.empty() ? std::string() : parquet::PlainText(text), rows);
  }

  void EndGroup() {
    if (points_[kMass].rows == 0) return;
    std::vector<parquet::Chunk> chunks;
    for (std::size_t place = 0; place < columns_.size(); ++place) {
      parquet::Chunk& points = points_[place];
      points.codec = deflater_ ? parquet::Codec::kGzip : parquet::Codec::kNone;
      const bool isRepeated = points.rows == 0;
      chunks.push_back(isRepeated ? repeated_[place].Finish(deflater_ ? &*deflater_ : nullptr)
                                  : std::move(points));
      points = {};
    }
    file_.AddRowGroup(chunks);
  }

  const RunPlan& plan_;
  const ParquetPlan& parquet_;
  std::vector<Column> columns_;
  // Of the row group: the columns that repeat, and the others.
  std::vector<parquet::RepeatedColumn> repeated_;
  std::vector<parquet::Chunk> points_;
  parquet::TableFile file_;
  std::optional<Deflater> deflater_;
  std::size_t batch_ = 0;
  const RunFunction* function_ = nullptr;
};

}  // namespace

std::unique_ptr<Renderer> MakeParquetRenderer(source::Source& source, const RunPlan& plan,
                                              const ParquetPlan& parquet, Losses& losses,
                                              const ArrayOptions& arrays) {
  return std::make_unique<ParquetRenderer>(source, plan, parquet, losses, arrays);
}

std::unique_ptr<Document> MakeParquetDocument(const RunPlan& plan, const ParquetPlan& parquet,
                                              const ArrayOptions& arrays, ByteSink& out) {
  return std::make_unique<ParquetDocument>(plan, parquet, arrays, out);
}

}  // namespace zrml::convert
