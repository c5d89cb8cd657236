// critical_section.h - the recursive lock behind every library mutex.
//
// Contract (every platform): recursive; Enter blocks until the calling thread holds the lock;
// TryEnter never blocks; Leave undoes one Enter or successful TryEnter of the holder. The lock
// counts the acquires that had to wait (the first try failed), readable and resettable. With a spin
// count, a contended Enter retries that many times before it blocks. NativeHandle is the address of
// the platform's own lock object. The bodies are inline and come from the platform folder, so that
// an uncontended pair costs no more than the platform's own lock and unlock.
#pragma once

#include "critical_section_native.h"
