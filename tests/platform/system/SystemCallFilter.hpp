// Makes a system call fail in this process, as on a file system or kernel that does not know it.
// For child processes: it cannot be undone. Thread-safety: for the calling thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace kestrivane::test {

namespace detail {

template <std::size_t length>
void install(std::array<sock_filter, length> program) {
  const sock_fprog filter{static_cast<unsigned short>(length), program.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
    throw std::runtime_error("no system call filter");
}

constexpr std::uint32_t failure(int errnoValue) {
  return SECCOMP_RET_ERRNO | (static_cast<std::uint32_t>(errnoValue) & SECCOMP_RET_DATA);
}

}  // namespace detail

/// From now on the system call `number` fails with `errnoValue`.
inline void refuseSystemCall(long number, int errnoValue) {
  detail::install(std::array<sock_filter, 4>{{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, detail::failure(errnoValue)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }});
}

/// The same, only where the argument `index` has one of the bits of `mask` set, which must fit its
/// lower half.
inline void refuseSystemCall(long number, unsigned index, std::uint32_t mask, int errnoValue) {
  const auto argument = static_cast<std::uint32_t>(offsetof(seccomp_data, args) + 8 * index);
  detail::install(std::array<sock_filter, 6>{{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argument),
      BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, mask, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, detail::failure(errnoValue)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }});
}

}  // namespace kestrivane::test
