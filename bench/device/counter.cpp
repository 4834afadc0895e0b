// A plug-in of the emulator: counts the instructions that the emulated program executes between two
// marks, each by its address. -plugin file=THIS,out=FILE: for each piece of work a line of the sum,
// then one of each address and its count; an empty line.
#include "bench/device/mark.h"
#include "bench/device/qemu_plugin.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>

namespace {

struct Place {
    std::uint64_t address;
    std::uint64_t count = 0;
};

std::deque<Place> places; // the emulator adds to their counts: they stay where they are
std::FILE* out = nullptr;

void onTranslation(qemu_plugin_id_t /*id*/, qemu_plugin_tb* block)
{
    for (std::size_t i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
        qemu_plugin_insn* const one = qemu_plugin_tb_get_insn(block, i);
        Place& place = places.emplace_back(Place{qemu_plugin_insn_vaddr(one)});
        qemu_plugin_register_vcpu_insn_exec_inline(
            one, QEMU_PLUGIN_INLINE_ADD_U64, &place.count, 1
        );
    }
}

void write()
{
    std::map<std::uint64_t, std::uint64_t> counts; // an address may have been translated twice
    std::uint64_t sum = 0;
    for (const Place& place : places) {
        if (place.count != 0) {
            counts[place.address] += place.count;
            sum += place.count;
        }
    }
    std::fprintf(out, "%" PRIu64 "\n", sum);
    for (const auto& [address, count] : counts) {
        std::fprintf(out, "%" PRIx64 " %" PRIu64 "\n", address, count);
    }
    std::fprintf(out, "\n");
    std::fflush(out);
}

void onSystemCall(
    qemu_plugin_id_t /*id*/,
    unsigned /*vcpu*/,
    std::int64_t number,
    std::uint64_t a1,
    std::uint64_t /*a2*/,
    std::uint64_t /*a3*/,
    std::uint64_t /*a4*/,
    std::uint64_t /*a5*/,
    std::uint64_t /*a6*/,
    std::uint64_t /*a7*/,
    std::uint64_t /*a8*/
)
{
    if (number != MARK) {
        return;
    }
    if (a1 == MARK_BEGIN) {
        for (Place& place : places) {
            place.count = 0;
        }
    } else if (a1 == MARK_END) {
        write();
    }
}

} // namespace

int qemu_plugin_version = 1;

int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* /*info*/, int argc, char** argv)
{
    constexpr const char* OUT = "out=";
    if (argc != 1 || std::strncmp(argv[0], OUT, std::strlen(OUT)) != 0) {
        std::fprintf(stderr, "counter: out=FILE is wanted\n");
        return -1;
    }
    out = std::fopen(argv[0] + std::strlen(OUT), "we");
    if (out == nullptr) {
        std::perror(argv[0]);
        return -1;
    }
    qemu_plugin_register_vcpu_tb_trans_cb(id, onTranslation);
    qemu_plugin_register_vcpu_syscall_cb(id, onSystemCall);
    return 0;
}
