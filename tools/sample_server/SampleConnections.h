#pragma once
// Socket-level helpers: the HTTP library does not hand its sockets to handlers, so the server finds the
// accepted socket of a connection by its ports among the process's descriptors.

namespace sample_server {

// Shuts down the accepted socket whose local port is `localPort` and whose peer port is `remotePort`.
// Returns whether one was found.
bool shutdownConnection(int localPort, int remotePort);

// Shuts down every accepted (connected) socket on `localPort`; the listening socket is left alone.
void shutdownAcceptedConnections(int localPort);

}  // namespace sample_server
