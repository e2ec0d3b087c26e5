// Every allocation, opening, seek, read and write of a program's life with a file fails in turn.
// The C library's functions stand here, in front of the real ones.
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <new>

#include "core/object_model.h"
#include "sessions.h"
#include "support.h"

namespace {

enum fault { allocation, opening, seeking, reading, writing };

// One fault, of one kind, to come when the countdown is over.
fault kind;
long countdown = 0;
bool armed = false;
bool fired = false;

bool fails_now(fault point)
{
    if (!armed || point != kind || --countdown != 0) return false;
    fired = true;
    return true;
}

long live_allocations = 0;
std::array<std::FILE*, 8> open_streams{};

template <class Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* counted(void* memory)
{
    live_allocations += memory != nullptr;
    return memory;
}

}  // namespace

#ifdef __SANITIZE_ADDRESS__
// The address sanitizer has a malloc() of its own.
void* operator new(std::size_t size)
{
    void* const memory = fails_now(allocation) ? nullptr : counted(std::malloc(size));
    return memory == nullptr ? throw std::bad_alloc() : memory;
}
__attribute__((noinline)) void operator delete(void* memory) noexcept
{
    live_allocations -= memory != nullptr;
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}
#else
extern "C" void* malloc(std::size_t size) noexcept
{
    static auto* const real = next<void*(std::size_t)>("malloc");
    return fails_now(allocation) ? nullptr : counted(real(size));
}
extern "C" void free(void* memory) noexcept
{
    static auto* const real = next<void(void*)>("free");
    live_allocations -= memory != nullptr;
    real(memory);
}
#endif

extern "C" {

std::FILE* fopen(const char* path, const char* mode)
{
    static auto* const real = next<std::FILE*(const char*, const char*)>("fopen");
    std::FILE* const stream = fails_now(opening) ? nullptr : real(path, mode);
    *std::find(open_streams.begin(), open_streams.end(), nullptr) = stream;
    return stream;
}

int fclose(std::FILE* stream)
{
    static auto* const real = next<int(std::FILE*)>("fclose");
    std::replace(open_streams.begin(), open_streams.end(), stream,
                 static_cast<std::FILE*>(nullptr));
    return real(stream);
}

int fseek(std::FILE* stream, long offset, int origin)
{
    static auto* const real = next<int(std::FILE*, long, int)>("fseek");
    return fails_now(seeking) ? -1 : real(stream, offset, origin);
}

ssize_t pread(int file, void* bytes, std::size_t count, off_t offset)
{
    static auto* const real = next<ssize_t(int, void*, std::size_t, off_t)>("pread");
    return fails_now(reading) ? 0 : real(file, bytes, count, offset);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* stream)
{
    static auto* const real =
        next<std::size_t(const void*, std::size_t, std::size_t, std::FILE*)>("fwrite");
    return real(bytes, size, fails_now(writing) ? count / 2 : count, stream);
}
}

namespace {

// Calls with one fault on its way.
struct faulty_call {
    bool try_again;  // or give up, by throwing the status
    int* failure;    // the status of the last call that failed for good

    template <class Function>
    void operator()(Function function) const
    {
        int status = attempt(function);
        if (status != 0 && fired && try_again) status = attempt(function);
        if (status == 0) return;
        *failure = status;
        if (!try_again) throw status;
    }

    template <class Function>
    static int attempt(Function function)
    {
        int status = out_of_memory;
        armed = !fired;
        try {
            status = function();
        } catch (const std::bad_alloc&) {
        }
        armed = false;
        return status;
    }

    static constexpr int out_of_memory = -1;
};

// The three sessions, each on the file that the one before it left.
enum session { write_session, append_session, read_session };

template <class Call>
void run(session which, const scratch_file& file, Call call)
{
    if (which == write_session) write_everything(file.path(), call);
    if (which == append_session) append_everything(file.path(), call);
    if (which == read_session) read_everything(file.path(), 3, call);
}

class Faults : public ::testing::Test {
  protected:
    // A run without faults, which is also what the C library needs for its first look at the time
    // zone and for the buffers it keeps.
    void SetUp() override
    {
        for (const session each : {write_session, append_session, read_session}) {
            before_[each] = scratch_.bytes();
            run(each, scratch_, [](auto function) { EXPECT_EQ(0, function()); });
            after_[each] = scratch_.bytes();
            EXPECT_EQ(each == append_session ? 1 : 0, close_streams());
        }
    }

    // Runs a session whose n-th call of one kind fails. @return the status it failed with
    int run_with_fault(session which, fault what, long n, bool try_again)
    {
        scratch_.fill(before_[which]);
        int failure = 0;
        kind = what;
        countdown = n;
        fired = false;
        try {
            run(which, scratch_, faulty_call{try_again, &failure});
        } catch (int) {
        }
        return failure;
    }

    static constexpr long never = 0;

    // Closes the streams that were left open, and lets the registry grow again at the next opening.
    // @return how many there were
    static int close_streams()
    {
        int count = 0;
        fileHandles.shrink_to_fit();
        for (std::FILE* const stream : std::array(open_streams)) {
            if (stream != nullptr) count += fclose(stream) == 0;
        }
        return count;
    }

    const scratch_file scratch_;
    std::string before_[3];
    std::string after_[3];
};

TEST_F(Faults, EachCallGivesUpOrCanBeTriedAgain)
{
    const struct {
        fault what;
        const char* name;
        std::vector<int> failures;  // that a session may give up with
    } rows[] = {
        {allocation, "allocations", {faulty_call::out_of_memory, TDMS_FILE_PATH, TDMS_FILE_READ}},
        {opening, "openings", {TDMS_FILE_PATH, TDMS_FILE_READ}},
        {seeking, "seeks", {TDMS_FILE_READ, TDMS_CHANNEL_DATA_READ}},
        {reading, "reads", {TDMS_FILE_READ, TDMS_CHANNEL_DATA_READ}},
    };
    for (const auto& row : rows) {
        int failed = 0;
        for (const session each : {write_session, append_session, read_session}) {
            for (long n = 1;; ++n) {
                SCOPED_TRACE(row.name + std::to_string(each) + " " + std::to_string(n));
                const long live = live_allocations;
                const int failure = run_with_fault(each, row.what, n, false);
                const int stayed_open = close_streams();
                if (!fired) break;
                ++failed;
                // What stays open: a file that was not read to its end for lack of memory, and the
                // one that appending replaces.
                const bool may_stay =
                    each == append_session ||
                    (each == read_session && failure == faulty_call::out_of_memory);
                EXPECT_LE(stayed_open, may_stay ? 1 : 0);
                // Appending does not look at whether it could open the file a second time.
                const bool unopened = each == append_session && failure == TDMS_FILE_HANDLE;
                EXPECT_TRUE(failure == 0 || unopened ||
                            std::count(row.failures.begin(), row.failures.end(), failure) == 1)
                    << failure;
                EXPECT_TRUE(failure == 0 || live == live_allocations) << live_allocations - live;
                EXPECT_TRUE(after_[each].starts_with(scratch_.bytes()));
                // The call that failed succeeds when it is made again; but nothing more is read
                // from a stream whose read fell short, for it is closed.
                const bool again = failure != 0 && !unopened && row.what != reading;
                EXPECT_EQ(0, run_with_fault(each, row.what, again ? n : never, true));
                EXPECT_EQ(after_[each], scratch_.bytes());
                close_streams();
            }
        }
        RecordProperty(row.name, failed);
    }
}

// A save does not tell that a write fell short. The segments in front of it are whole.
TEST_F(Faults, AShortWriteGoesUnreported)
{
    for (const session each : {write_session, append_session}) {
        const std::string& whole = after_[each];
        const std::vector<std::size_t> offsets = segment_offsets(whole);
        auto first = std::find(offsets.begin(), offsets.end(), before_[each].size());
        for (long n = 1; std::next(first) != offsets.end(); ++n) {
            SCOPED_TRACE(std::to_string(each) + " " + std::to_string(n));
            EXPECT_EQ(0, run_with_fault(each, writing, n, false));
            EXPECT_TRUE(fired);
            const std::size_t begin = *first++;
            const std::size_t end = *first;
            EXPECT_EQ(whole.substr(0, (begin + end) / 2) + whole.substr(end), scratch_.bytes());
            std::filesystem::resize_file(scratch_.path(), begin);
            EXPECT_EQ(0, open_tdms(scratch_, "r").status);
            close_streams();
        }
    }
}

}  // namespace
