// Questions to a data server, and its answers with all outputs as one text: answers of two servers are
// compared as text, numbers to the bit.
#pragma once

#include <string>

#include "plugin/data_server.h"

namespace zrml {

struct Question {
  int operation = 0;  // 0 to kOperations - 1
  int sample = 0;
  int function = 0;
  int index = 0;  // scan, trace or metadata item
};

extern const int kOperations;

/// The operation's name and arguments, its result, and its outputs. Outputs start with contents that show
/// whether they were left unchanged.
std::string Answer(CDataServerImpl& server, const Question& question);

/// The answers to every operation, each at all existing positions and one beyond either end.
std::string AllAnswers(CDataServerImpl& server);

}  // namespace zrml
