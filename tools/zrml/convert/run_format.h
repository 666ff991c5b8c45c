// An open format: each spectrum's text is made by renderers, one a worker, and put together by a document.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zrml/convert/byte_sink.h"
#include "tools/zrml/convert/mzml_arrays.h"
#include "tools/zrml/convert/run_plan.h"
#include "tools/zrml/convert/source_files.h"

namespace zrml {

enum class Format { kMzml, kMgf, kTsv };

/// What is told about a run beside its points.
struct RunContext {
  const RunPlan& plan;
  CDataServerImpl& server;
  std::wstring name;
  const std::vector<SourceFile>& files;
  ArrayOptions arrays = {};
  bool isIndexed = false;
};

/// Used by one thread at a time.
class Renderer {
 public:
  Renderer() = default;
  Renderer(const Renderer&) = delete;
  Renderer& operator=(const Renderer&) = delete;
  virtual ~Renderer() = default;

  /// Replaces `text` with entry `index` of the run. Throws a Failure.
  virtual void Render(std::size_t index, std::string& text) = 0;
};

class Document {
 public:
  Document() = default;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  virtual ~Document() = default;

  /// In this order; Add once an entry. Each throws a Failure.
  virtual void Begin() = 0;
  virtual void Add(std::string_view text) = 0;
  virtual void End() = 0;

  virtual std::size_t ChromatogramCount() const { return 0; }
};

/// `server` is the renderer's own; what is passed must outlive the result.
std::unique_ptr<Renderer> MakeMzmlRenderer(CDataServerImpl& server, const RunPlan& plan,
                                           const ArrayOptions& arrays);
std::unique_ptr<Document> MakeMzmlDocument(const RunContext& context, ByteSink& out);
std::unique_ptr<Renderer> MakeMgfRenderer(CDataServerImpl& server, const RunPlan& plan);
std::unique_ptr<Renderer> MakeTsvRenderer(CDataServerImpl& server, const RunPlan& plan);
/// Texts one after the other, `heading` in front.
std::unique_ptr<Document> MakePlainDocument(std::string_view heading, ByteSink& out);

}  // namespace zrml
