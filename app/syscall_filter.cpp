// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/syscall_filter.h"

#ifdef __linux__

#include <linux/filter.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "app/document_error.h"
#include "common/handles.h"

namespace wren::app {
namespace {

static_assert(sizeof(FilterInstruction) == sizeof(sock_filter));

// By name: an older libseccomp does not know the newest calls and skips them. io_uring reaches
// sockets without the calls named here.
constexpr const char* kRefusedCalls[] = {
    "socket",
    "socketpair",
    "connect",
    "bind",
    "listen",
    "accept",
    "accept4",
    "sendto",
    "sendmsg",
    "sendmmsg",
    "recvfrom",
    "recvmsg",
    "recvmmsg",
    "setsockopt",
    "getsockopt",
    "socketcall",
    "io_uring_setup",
    "io_uring_enter",
    "io_uring_register",
    "fork",
    "vfork",
    "ptrace",
    "process_vm_readv",
    "process_vm_writev",
    "pidfd_getfd",
    "kcmp",
    "unshare",
    "setns",
    "mount",
    "umount2",
    "pivot_root",
    "chroot",
    "open_tree",
    "move_mount",
    "fsopen",
    "fsmount",
    "mount_setattr",
    "bpf",
    "perf_event_open",
    "userfaultfd",
    "keyctl",
    "add_key",
    "request_key",
    "init_module",
    "finit_module",
    "delete_module",
    "kexec_load",
    "kexec_file_load",
    "reboot",
    "swapon",
    "swapoff",
    "acct",
    "settimeofday",
    "clock_settime",
    "personality",
    "kill",
    "tkill",
    "pidfd_send_signal",
    "mknod",
    "mknodat",
};

struct ReleaseFilter {
  void operator()(void* context) const { seccomp_release(context); }
};
using FilterContext = std::unique_ptr<void, ReleaseFilter>;

[[noreturn]] void failToBuild() {
  throw DocumentError(DocumentError::Kind::kSystem, "the system call filter cannot be built");
}

void check(int result) {
  if (result < 0) failToBuild();
}

// Threads are allowed. The flags of clone3 lie in memory, where a filter cannot see them; the C
// library goes back to clone where clone3 is missing.
void refuseProcesses(scmp_filter_ctx context) {
  check(seccomp_rule_add(context, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0));
  const scmp_arg_cmp startsProcess = {0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0};
  check(
      seccomp_rule_add_array(context, SCMP_ACT_ERRNO(EACCES), SCMP_SYS(clone), 1, &startsProcess));
}

FilterContext describeFilter() {
  FilterContext context(seccomp_init(SCMP_ACT_ALLOW));
  if (context == nullptr) failToBuild();
  for (const char* name : kRefusedCalls) {
    const int number = seccomp_syscall_resolve_name(name);
    if (number == __NR_SCMP_ERROR) continue;
    check(seccomp_rule_add(context.get(), SCMP_ACT_ERRNO(EACCES), number, 0));
  }
  refuseProcesses(context.get());
  return context;
}

std::vector<FilterInstruction> buildFilter() {
  const FilterContext context = describeFilter();
  const FileDescriptor file(::memfd_create("filter", MFD_CLOEXEC));
  if (!file) failToBuild();
  check(seccomp_export_bpf(context.get(), file.get()));
  const off_t bytes = ::lseek(file.get(), 0, SEEK_END);
  if (bytes <= 0) failToBuild();
  std::vector<FilterInstruction> filter(static_cast<std::size_t>(bytes) /
                                        sizeof(FilterInstruction));
  if (::pread(file.get(), filter.data(), static_cast<std::size_t>(bytes), 0) != bytes) {
    failToBuild();
  }
  return filter;
}

}  // namespace

const std::vector<FilterInstruction>& syscallFilter() {
  static const std::vector<FilterInstruction> kFilter = buildFilter();
  return kFilter;
}

bool enterSyscallFilter(const std::vector<FilterInstruction>& filter) {
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
  sock_fprog program{};
  program.len = static_cast<unsigned short>(filter.size());
  // The kernel only reads it.
  program.filter = reinterpret_cast<sock_filter*>(const_cast<FilterInstruction*>(filter.data()));
  return ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

}  // namespace wren::app

#else

namespace wren::app {

const std::vector<FilterInstruction>& syscallFilter() {
  static const std::vector<FilterInstruction> none;
  return none;
}

bool enterSyscallFilter(const std::vector<FilterInstruction>&) {
  return true;
}

}  // namespace wren::app

#endif
