// Questions to a data server, and its answers with all outputs as one text: answers of two servers are
// compared as texts, numbers to the bit.
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

/// The operation's name and arguments, its result, and what it has made of its outputs. Outputs begin with
/// contents that show when they are left alone.
std::string Answer(CDataServerImpl& server, const Question& question);

/// The answers to every operation, each with the positions that there are and one beyond at either end.
std::string AllAnswers(CDataServerImpl& server);

}  // namespace zrml
