// The C library's sine, cosine, tangent and arctangent set the rounding mode by an instruction (mffscrni) that the
// emulator of this machine does not know. Processors without it take it for the older one that reads the status
// register; this handler carries out the newer meaning, for every test program that it is linked into.

#include <ucontext.h>
#include <csignal>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::uint32_t kMask = 0xFC1F07FE, kInstruction = 0xFC17048E;  // mffscrni FRT, RN
constexpr int kNextInstruction = 32;                                    // the index of the address register

void carry_out(int, siginfo_t*, void* context) {
    mcontext_t& state = *static_cast<ucontext_t*>(context)->uc_mcontext.uc_regs;
    const auto address = static_cast<std::uintptr_t>(state.gregs[kNextInstruction]);
    std::uint32_t instruction = 0;
    std::memcpy(&instruction, reinterpret_cast<const void*>(address), sizeof instruction);
    if ((instruction & kMask) != kInstruction) {
        std::signal(SIGILL, SIG_DFL);  // a real one
        return;
    }
    std::uint64_t status = 0;
    std::memcpy(&status, &state.fpregs.fpscr, sizeof status);
    std::memcpy(&state.fpregs.fpregs[instruction >> 21 & 31], &status, sizeof status);
    status = (status & ~std::uint64_t{3}) | (instruction >> 11 & 3);
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
