// Opens the source named by the user, and finds numbered items in it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "source/source.h"
#include "tools/zrml/failure.h"

namespace zrml::tool {

/// Throws a Failure with the status and the message of what the source reports; wrong usage without a path.
std::unique_ptr<source::Source> OpenSource(const std::string& path);

/// The result of `read` on an open source. Throws a Failure, unreadable, that names the source.
template <class Read>
auto Reading(const source::Source& source, Read read) {
  try {
    return read();
  } catch (const source::Error& error) {
    throw Failure(ExitStatus::kUnreadable, source.Path() + ": " + error.Message());
  }
}

/// Throws a Failure when the system does not allow `count` more open files.
void RequireFiles(int count);

/// A sample for messages: the path, with the number of the sample when it is one of several.
std::string NameOf(source::Source& source, int sample);

/// The position of the item that the user called `number`. Throws a Failure, wrong usage, unless it is one
/// of 1 to `count`; `noun` and `owner` ("scan", "function 2") name it and what holds it.
int PositionOf(int number, int count, const std::string& noun, const std::string& owner);

/// Positions of a sample and of a function of it.
struct FunctionPosition {
  int sample = 0;
  int function = 0;
};
int FindSample(source::Source& source, int sampleNumber);
/// "functions 1 to 4, 6, p1", "no functions".
std::string FunctionsText(source::Source& source, int sample);
/// Whether two names mean one function: for processed data the raw function's number is ignored.
bool IsSameName(const source::FunctionId& a, const source::FunctionId& b);
/// Throws a Failure that says what reads the absorbance data of a raw directory, which are in no function of
/// its list.
[[noreturn]] void RefuseAbsorbance(source::Source& source, int sample);
FunctionPosition FindFunction(source::Source& source, int sampleNumber, const source::FunctionId& id);
/// The function called `id`, or without one the only function. Throws a Failure, wrong usage, unless there is
/// one.
FunctionPosition FindChosen(source::Source& source, int sampleNumber,
                            const std::optional<source::FunctionId>& id);
const source::Function& FunctionAt(source::Source& source, const FunctionPosition& position);

/// The subject of the findings that concern the function.
FindingSubject SubjectOf(const source::Source& source, int sample, const source::FunctionId& id);

}  // namespace zrml::tool
