#pragma once

#include <functional>

namespace tarvo::test {

// Calls `work(0)` to `work(count - 1)` on at most so many threads, the calling one among them, and returns when all
// have ended. If some throw, no more are begun, and what the first one threw is thrown. Threads that cannot be made are
// done without. New threads take no signals.
void side_by_side(int threads, int count, const std::function<void(int)>& work);

}  // namespace tarvo::test
