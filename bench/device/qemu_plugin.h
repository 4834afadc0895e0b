/**
 * What this folder uses of QEMU's interface for plug-ins, version 1, as qemu-user 7.2 has it; no
 * Debian package has its header. The emulator looks up the two names at the end and calls in by the
 * rest.
 */
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

using qemu_plugin_id_t = std::uint64_t;
struct qemu_info_t;
/** A block of instructions that is translated at once, and one of its instructions. */
struct qemu_plugin_tb;
struct qemu_plugin_insn;

enum qemu_plugin_op {
    QEMU_PLUGIN_INLINE_ADD_U64,
};

/** Both are valid during the call for the block's translation only. */
using qemu_plugin_vcpu_tb_trans_cb_t = void (*)(qemu_plugin_id_t, qemu_plugin_tb*);
using qemu_plugin_vcpu_syscall_cb_t = void (*)(
    qemu_plugin_id_t,
    unsigned vcpu,
    std::int64_t number,
    std::uint64_t a1,
    std::uint64_t a2,
    std::uint64_t a3,
    std::uint64_t a4,
    std::uint64_t a5,
    std::uint64_t a6,
    std::uint64_t a7,
    std::uint64_t a8
);

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t, qemu_plugin_vcpu_tb_trans_cb_t);
/** Called before each system call of the program. */
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t, qemu_plugin_vcpu_syscall_cb_t);
std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb*);
qemu_plugin_insn* qemu_plugin_tb_get_insn(const qemu_plugin_tb*, std::size_t index);
std::uint64_t qemu_plugin_insn_vaddr(const qemu_plugin_insn*);
/** Adds `value` to `*place` whenever the instruction is executed. */
void qemu_plugin_register_vcpu_insn_exec_inline(
    qemu_plugin_insn*, qemu_plugin_op, void* place, std::uint64_t value
);

[[gnu::visibility("default")]] extern int qemu_plugin_version;
/** `argv` are the words behind the plug-in's file, NAME=VALUE each; 0 on success. */
[[gnu::visibility("default")]] int
qemu_plugin_install(qemu_plugin_id_t, const qemu_info_t*, int argc, char** argv);
}
