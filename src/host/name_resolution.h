// name_resolution.h - name resolution with the library's folding of the name and its reading of
// IPv6 literals spelled as host names.
#pragma once

#include "platform/host_network.h"

namespace qz::core {

// The platform's getaddrinfo on a folded copy of `node`, rewritten when it holds the IPv6-literal
// suffix. Returns the resolver's code; the list goes back through qz::os::FreeAddrInfo. Throws
// std::bad_alloc when the copy cannot be made.
int ResolveHostName(const char* node, const char* service,
                    const qz::os::AddressInfo* hints, qz::os::AddressInfo** result);

}  // namespace qz::core
