// How a format writes a run: each spectrum's text is made by renderers, one per worker, and assembled by a
// document.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "convert/byte_sink.h"
#include "convert/losses.h"
#include "convert/mzml_arrays.h"
#include "convert/parquet_plan.h"
#include "convert/plan.h"
#include "convert/source_files.h"

namespace zrml::convert {

/// Used by one thread at a time.
class Renderer {
 public:
  Renderer() = default;
  Renderer(const Renderer&) = delete;
  Renderer& operator=(const Renderer&) = delete;
  virtual ~Renderer() = default;

  /// Replaces `text` with entry `index` of the run, or that batch of Parquet's entries. Throws an Error.
  virtual void Render(std::size_t index, std::string& text) = 0;
};

class Document {
 public:
  Document() = default;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  virtual ~Document() = default;

  /// In this order; Add once for each text of the renderers. Each throws an Error.
  virtual void Begin() = 0;
  virtual void Add(std::string_view text) = 0;
  virtual void End() = 0;

  virtual std::size_t ChromatogramCount() const { return 0; }
};

/// Everything a run is written from, except its spectra.
struct RunContext {
  const RunPlan& plan;
  source::Source& source;
  Losses& losses;
  const std::vector<SourceFile>& files;
  ArrayOptions arrays = {};
  bool isIndexed = false;
  Cancel cancel = {};
};

/// `source` is the renderer's own; what is passed must outlive the result.
std::unique_ptr<Renderer> MakeMzmlRenderer(source::Source& source, const RunPlan& plan, Losses& losses,
                                           const ArrayOptions& arrays);
std::unique_ptr<Document> MakeMzmlDocument(const RunContext& context, ByteSink& out);
std::unique_ptr<Renderer> MakeMgfRenderer(source::Source& source, const RunPlan& plan, Losses& losses);
std::unique_ptr<Document> MakeMgfDocument(ByteSink& out);
std::unique_ptr<Renderer> MakeTsvRenderer(source::Source& source, const RunPlan& plan, Losses& losses);
std::unique_ptr<Document> MakeTsvDocument(ByteSink& out);
std::unique_ptr<Renderer> MakeParquetRenderer(source::Source& source, const RunPlan& plan,
                                              const ParquetPlan& parquet, Losses& losses,
                                              const ArrayOptions& arrays);
std::unique_ptr<Document> MakeParquetDocument(const RunPlan& plan, const ParquetPlan& parquet,
                                              const ArrayOptions& arrays, ByteSink& out);

}  // namespace zrml::convert
