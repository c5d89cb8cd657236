/* qzhost.h - host identity: the host name, name resolution, this host's addresses, and the test
 * whether a name means this computer.
 *
 * Address lists are chains of the system's `struct addrinfo` (<netdb.h>), linked by ai_next; the
 * address families are the system's (AF_INET, AF_INET6). Include <netdb.h> to read the records.
 *
 * The host's own address lists are taken once per process, at the first QZGetMyAddressInformation
 * (or QZIsThisMyComputer*) call, and never refreshed: an address added later is not seen. Likewise
 * every answer of QZIsThisMyComputer* is kept for the life of the process, negative ones included.
 * Every function may be called from any thread.
 */
#ifndef QZCORE_QZHOST_H
#define QZCORE_QZHOST_H

#include "qzcore/qztypes.h"

struct addrinfo;

/* The domain under which an IPv6 literal may be spelled as a host name: dashes for colons, "s" in
 * front of a zone index ("fe80--1s4.ipv6-literal.net" for fe80::1%4). */
#define QZ_IPV6_LITERAL_SUFFIX ".ipv6-literal.net"

QZ_EXTERN_C_BEGIN

/* Copies the host name with its terminator into `buffer` of `size` bytes. 0; QZ_E_FAIL when `size`
 * is below the name's length plus one (the buffer is not touched); the translated system error when
 * the name cannot be read. */
QZ_API QZRESULT QZGetHostNameA(char* buffer, int32_t size);

/* As QZGetHostNameA, into 16-bit units converted from the C locale's encoding; `size` in units. The
 * size is compared with the name's length in bytes plus one. */
QZ_API QZRESULT QZGetHostName(QZWCHAR* buffer, int32_t size);

/* getaddrinfo on a folded copy of `node` (not NULL): ASCII letters go to upper case as in
 * QZStrToLowerA. If the folded text holds QZ_IPV6_LITERAL_SUFFIX it is cut there, and each "-"
 * becomes ":" and each "s" becomes "%". Since the fold turns ASCII to upper case first, only a name
 * with a byte of 0x80 or above in front of the suffix is rewritten. Returns getaddrinfo's code (0 on
 * success; EAI_MEMORY if the copy cannot be made); the list belongs to the caller and goes back
 * through QZfreeaddrinfo. */
QZ_API int32_t QZgetaddrinfo(const char* node, const char* service, const struct addrinfo* hints,
                             struct addrinfo** result);

/* Gives back a list of QZgetaddrinfo (freeaddrinfo). */
QZ_API void QZfreeaddrinfo(struct addrinfo* list);

/* This host's address lists, built on the first call and kept for the process: *interfaces gets the
 * addresses of every interface (IPv4 first, then IPv6 without ::1, in interface order; the head
 * carries the canonical name of "localhost"), *loopback the addresses of "localhost", with fe80::1
 * (scope 1) in front if an interface has it. The lists belong to the library: never free or change
 * them. Sets *interfaces to NULL first. 0; QZ_E_FAIL if the network layer cannot start (*loopback
 * untouched, a later call tries again). Blocks while another thread builds the lists. */
QZ_API QZRESULT QZGetMyAddressInformation(struct addrinfo** interfaces, struct addrinfo** loopback);

/* 1 if some record of `first` and some record of `second` have the same address (IPv4: 32 bits,
 * IPv6: 128 bits; port, flow and scope ignored; records of different families never match), else
 * 0. NULL lists yield 0. */
QZ_API QZBOOL16 QZCompareAddressInformation(const struct addrinfo* first, const struct addrinfo* second);

/* 1 if `name` (a host name or numeric address, not NULL) denotes this computer, else 0. The name
 * is cut to 1025 bytes and folded as in QZStrToLowerA; the host name (in any ASCII case),
 * "127.0.0.1", "::1" and "" are known at once; any other name is resolved once, holding a process-wide
 * lock, and is this computer when one of its addresses is an address of "localhost" or of an
 * interface. The answer is kept for the life of the process. Any failure answers 0. */
QZ_API QZBOOL16 QZIsThisMyComputerA(const char* name);

/* As QZIsThisMyComputerA, on `name` converted to the C locale's encoding. 0 for NULL and for a name
 * longer than 1025 bytes once converted. */
QZ_API QZBOOL16 QZIsThisMyComputerW(const QZWCHAR* name);

QZ_EXTERN_C_END

#endif /* QZCORE_QZHOST_H */
