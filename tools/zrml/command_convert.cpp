// zrml convert: sources into files of open formats.
#include "tools/zrml/command.h"
#include "tools/zrml/convert_batch.h"
#include "tools/zrml/convert_request.h"
#include "tools/zrml/interruption.h"

namespace zrml::tool {
namespace {

class ConvertCommand : public Command {
 public:
  explicit ConvertCommand(CLI::App& parser)
      : Command(parser, "convert", "Convert sources to mzML, MGF, TSV or Parquet") {
    AddConvertOptions(Options(), request_);
  }

  void Run(Output& out) override {
    Complete(request_);
    try {
      ConvertAll(request_, out);
    } catch (const source::Cancelled&) {
      EndByInterruption();
    }
  }

 private:
  ConvertRequest request_;
};

}  // namespace

std::unique_ptr<Command> MakeConvertCommand(CLI::App& parser) {
  return std::make_unique<ConvertCommand>(parser);
}

}  // namespace zrml::tool
