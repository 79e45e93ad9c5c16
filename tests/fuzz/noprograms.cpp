#include "fuzz/noprograms.h"

#include "fuzz/fuzztarget.h"

#include <cerrno>
#include <cstddef>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sanitizer/common_interface_defs.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

void startNoPrograms()
{
    // Asked for one name, the sanitizers start their program, which then answers until the end.
    char name[64];
    __sanitizer_symbolize_pc(__builtin_return_address(0), "%f", name, sizeof(name));

    constexpr auto Number = static_cast<unsigned>(offsetof(seccomp_data, nr));
    constexpr auto Flags = static_cast<unsigned>(offsetof(seccomp_data, args));
    constexpr unsigned Refuse = SECCOMP_RET_ERRNO | EAGAIN;
    // Threads, which share the memory, can still be made. What cannot be looked into, clone3(), is
    // not there, and the C library then uses the older call.
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, Number),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 4, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 2),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, Flags),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_VM, 0, 2),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, Refuse),
    };
    const sock_fprog filter = {static_cast<unsigned short>(std::size(program)), program};
    expect(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
               ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0,
           "system calls can be filtered");
}
