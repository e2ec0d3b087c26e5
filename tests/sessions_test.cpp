// A file with everything in it, by one thread and by several, each with a file of its own.
#include "sessions.h"

#include <atomic>
#include <thread>

#include "support.h"

// The C library guards what it knows of the time zone by a lock that the thread sanitizer cannot
// see.
extern "C" const char* __tsan_default_suppressions()
{
    return "called_from_lib:libc.so.6\n";
}

namespace {

std::atomic<int> calls = 0;

void whole_life(const scratch_file& scratch, int rounds)
{
    const auto call = [](auto function) {
        EXPECT_EQ(0, function());
        ++calls;
    };
    for (int round = 0; round != rounds; ++round) {
        write_everything(scratch.path(), call);
        append_everything(scratch.path(), call);
        read_everything(scratch.path(), 3, call);
        call([&] { return delete_file(scratch.path()); });
    }
}

TEST(Sessions, EverythingComesBack)
{
    whole_life(scratch_file(), 1);
}

TEST(Sessions, InSeveralThreads)
{
    const scratch_file files[8];
    std::vector<std::thread> threads;
    for (const scratch_file& file : files) threads.emplace_back([&] { whole_life(file, 5); });
    for (std::thread& t : threads) t.join();
    RecordProperty("calls", calls);
}

}  // namespace
