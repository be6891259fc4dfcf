// What the compiler's stack protector and its checked library calls need on Windows. The compiler's
// own library for this asks a cryptographic provider for the guard while the component is being
// loaded; that loads another library, which the system forbids at that moment.
#include <windows.h>

#include <cstdint>

namespace {

// The reasons as the system knows them: they stand in its report of the failure.
constexpr uint32_t kStackGuardOverwritten = 2;
constexpr uint32_t kBeyondABuffer = 8;

// The process ends at once. No handler runs: what it would run on has been overwritten.
[[noreturn]] void FailFast(uint32_t reason) {
  asm volatile("int $0x29" : : "c"(reason));
  __builtin_unreachable();
}

}  // namespace

extern "C" {

// Stands between the variables of a function and where it returns to.
extern uintptr_t __stack_chk_guard;
uintptr_t __stack_chk_guard = static_cast<uintptr_t>(0x2B992DDFA2327B00);

// As unforeseeable as addresses, clocks and numbers of processes are: what may be asked for while a
// library is being loaded. The lowest byte stays 0, so that no copied text gets past it.
__attribute__((constructor(101), no_stack_protector)) void ChooseStackGuard() {
  FILETIME time;
  GetSystemTimeAsFileTime(&time);
  LARGE_INTEGER counter;
  QueryPerformanceCounter(&counter);
  uint64_t guard = reinterpret_cast<uintptr_t>(&guard);
  const auto mix = [&](uint64_t value) __attribute__((no_stack_protector)) {
    guard = (guard ^ value) * 0x9E3779B97F4A7C15u;
    guard ^= guard >> 29;
  };
  mix(static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
  mix(static_cast<uint64_t>(counter.QuadPart));
  mix(GetCurrentProcessId());
  mix(static_cast<uint64_t>(GetCurrentThreadId()) << 32 | GetTickCount());
  mix(reinterpret_cast<uintptr_t>(&ChooseStackGuard));
  __stack_chk_guard = static_cast<uintptr_t>(guard) & ~uintptr_t{0xFF};
}

// Called where a function finds the guard overwritten.
[[noreturn]] void __stack_chk_fail() {
  FailFast(kStackGuardOverwritten);
}

// Called by copies that would go beyond the buffer that they are given.
[[noreturn]] void __chk_fail() {
  FailFast(kBeyondABuffer);
}
}
