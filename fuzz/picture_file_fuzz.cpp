// The readers and writers of picture files, given any bytes.

#include "fuzz_check.h"
#include "picture_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarvo::fuzz::check_picture_file({data, size});
    return 0;
}
