// The other side of the face, for our own hosts on Windows: a data server that calls the plug-in's through
// its table.
#pragma once

#include <memory>

#include "plugin/data_server.h"
#include "plugin/hostabi/face.h"

namespace zrml::hostabi {

/// Makes a server that owns `face` and destroys it through slot 0.
std::unique_ptr<CDataServerImpl> ServerOfFace(Face* face);

}  // namespace zrml::hostabi
