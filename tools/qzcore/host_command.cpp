// host_command.cpp - `qzcore host NAME`: whether NAME (a host name or address) means this computer,
// and when it does not, why: the name did not resolve, or it resolved to other machines' addresses.
#include <netdb.h>
#include <sys/socket.h>

#include <string>

#include "command.h"
#include "qzcore/qzhost.h"
#include "tool_text.h"

namespace qztool {
namespace {

// Exit code 0 when NAME is this computer, 1 when it is not.
int Host(const Command& self, int argc, char** argv) {
  Arguments args = ReadArguments(self, argc, argv, nullptr, nullptr, 1, 1);
  if (args.exit >= 0) return args.exit;
  const std::string& name = args.operands[0];
  if (QZIsThisMyComputerA(name.c_str()) != 0) {
    std::printf("%s: this computer\n", name.c_str());
    return 0;
  }
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;  // one record per address
  addrinfo* list = nullptr;
  const int32_t status = QZgetaddrinfo(name.c_str(), nullptr, &hints, &list);
  if (status != 0) {
    std::printf("%s: not this computer (the name did not resolve: %s)\n", name.c_str(), gai_strerror(status));
  } else {
    std::printf("%s: not this computer (it resolves to %s, none of them an address of this computer)\n",
                name.c_str(), AddressTexts(list).c_str());
    QZfreeaddrinfo(list);
  }
  return 1;
}

QZ_COMMAND("host", "NAME", "tell whether NAME (a host name or address) is this computer, and why not", Host);

}  // namespace
}  // namespace qztool
