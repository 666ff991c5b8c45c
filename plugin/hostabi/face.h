// The face of a data server for hosts built by Microsoft's compiler: an object whose first word is the
// address of a table of 51 functions. docs/host-contract.md
#pragma once

#include <memory>

#include "plugin/data_server.h"

namespace zrml::hostabi {

struct Face {
  const void* const* table;
  std::unique_ptr<CDataServerImpl> server;
};

/// Makes a face that owns `server`. The host destroys it through slot 0.
Face* MakeFace(std::unique_ptr<CDataServerImpl> server);

}  // namespace zrml::hostabi
