// The request handlers of the client file content messages of the adapters interface
// (protocol/messages/FileContent.def); docs/server.md gives their meaning.
//
// - SET_CLIENT_FILE_CONTENT registers a file the client has put into Temp/ through the
//   file-transfer facility. The registered path is the client's idea of where the file lies
//   (its configured install directory of this server, "Temp/", the name); the server takes the
//   plain file name the path ends in, requires that file in its own Temp/ folder, and stores
//   the registration (FileContentStore) with the file's size and the client's text.
// - GET_CLIENT_FILE_CONTENT asks whether a file is registered for the client and still held:
//   the first text is a registered path or a file name; the second is accepted and not used.
// - PUSH_VS_DATA keeps the four values, the text and the number as received.
//
// The answers are the response header alone: a failure is its code and text.
#pragma once

#include <string>

#include "server/core/Server.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Registers the three handlers; `tempDirectory` is the folder the file-transfer facility writes
// (empty: the server receives no files, and registrations are refused).
// REQUIRES: `store` outlives every request the server answers (stop the server first).
void RegisterFileContentHandlers(Server& server, Store& store, const std::string& tempDirectory);

}  // namespace appmgr::server
