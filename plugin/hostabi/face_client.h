// The other side of the face, for hosts of our own on Windows: a data server that reaches the plug-in's
// through its table.
#pragma once

#include <memory>

#include "plugin/data_server.h"
#include "plugin/hostabi/face.h"

namespace zrml::hostabi {

/// A server over `face`, which it owns and destroys through slot 0.
std::unique_ptr<CDataServerImpl> ServerOfFace(Face* face);

}  // namespace zrml::hostabi
