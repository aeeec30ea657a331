#pragma once
// RequestType: where a query is answered from (the store, the server, both, or the store first).

namespace ycontacts {

enum class RequestType { local, server, both, preferLocal };

}  // namespace ycontacts
