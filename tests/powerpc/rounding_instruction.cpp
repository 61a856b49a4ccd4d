// The C library's sine, cosine, tangent and arctangent set the rounding mode by an instruction (mffscrni), and what
// asks for that mode reads it by another (mffsl), which the emulator of this machine does not know. Processors without
// them take them for the older one that reads all of the status register. This handler carries them out, the first one
// in its newer meaning, for every test program that it is linked into.

#include <ucontext.h>
#include <csignal>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::uint32_t kMask = 0xFC1F07FE;
constexpr std::uint32_t kReadAndRound = 0xFC17048E;  // mffscrni FRT, RN
constexpr std::uint32_t kRead = 0xFC18048E;          // mffsl FRT
constexpr int kNextInstruction = 32;                 // the index of the address register

void carry_out(int, siginfo_t*, void* context) {
    mcontext_t& state = *static_cast<ucontext_t*>(context)->uc_mcontext.uc_regs;
    const auto address = static_cast<std::uintptr_t>(state.gregs[kNextInstruction]);
    std::uint32_t instruction = 0;
    std::memcpy(&instruction, reinterpret_cast<const void*>(address), sizeof instruction);
    const std::uint32_t kind = instruction & kMask;
    if (kind != kReadAndRound && kind != kRead) {
        std::signal(SIGILL, SIG_DFL);  // a real one
        return;
    }
    std::uint64_t status = 0;
    std::memcpy(&status, &state.fpregs.fpscr, sizeof status);
    std::memcpy(&state.fpregs.fpregs[instruction >> 21 & 31], &status, sizeof status);
    if (kind == kReadAndRound) status = (status & ~std::uint64_t{3}) | (instruction >> 11 & 3);
    std::memcpy(&state.fpregs.fpscr, &status, sizeof status);
    state.gregs[kNextInstruction] = static_cast<unsigned long>(address + sizeof instruction);
}

[[maybe_unused]] const bool installed = [] {
    struct sigaction action = {};
    action.sa_sigaction = carry_out;
    action.sa_flags = SA_SIGINFO;
    return sigaction(SIGILL, &action, nullptr) == 0;
}();

}  // namespace
