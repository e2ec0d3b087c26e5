// What the system does not take: a write that stops at any byte, a limit of file sizes, a full
// device, and a lock. The C library's write() and ftruncate() are here, before the real ones.
#include <sys/resource.h>

#include <cerrno>
#include <csignal>

#include "elements.h"
#include "streams.h"
#include "support.h"

namespace {

// How many bytes the system still takes; -1 for all.
std::int64_t room = -1;
bool truncating_fails = false;
bool syncing_fails = false;

}  // namespace

extern "C" ssize_t write(int file, const void* bytes, std::size_t count)
{
    REAL(write);
    if (room == 0) {
        errno = ENOSPC;
        return -1;
    }
    if (room > 0) count = std::min(count, static_cast<std::size_t>(room));
    const ssize_t part = real(file, bytes, count);
    if (room > 0 && part > 0) room -= part;
    return part;
}

extern "C" int ftruncate(int file, off_t size) noexcept
{
    REAL(ftruncate);
    if (!truncating_fails) return real(file, size);
    errno = EIO;
    return -1;
}

extern "C" int fdatasync(int file)
{
    REAL(fdatasync);
    if (!syncing_fails) return real(file);
    errno = EIO;
    return -1;
}

namespace {

// A save of everything that there is to save, in two groups.
void append_everything_once(const tdms_file& file)
{
    for_each_element([&]<class Element>(Element) {
        void* const channel = file.channel(Element::code % 2 == 0 ? "g" : "h", Element::name);
        EXPECT_EQ(0, Element::append(channel, 2, Element::samples));
    });
    EXPECT_EQ(0, create_file_property_string(file.handle, "p", "text"));
}

class Saving : public testing::Test {
  protected:
    // A file with one save of everything.
    void SetUp() override
    {
        set_time_zone("UTC");
        tdms_file first(scratch_, "w");
        append_everything_once(first);
        first.save_and_close();
        before_ = scratch_.bytes();
        tdms_file undisturbed(scratch_, "a");
        append_again(undisturbed);
        undisturbed.save_and_close();
        after_ = scratch_.bytes();
    }
    void TearDown() override
    {
        room = -1;
        truncating_fails = false;
    }

    // What is new in the second save has a property less: the name is there already.
    static void append_again(const tdms_file& file)
    {
        EXPECT_EQ(0, delete_file_property(file.handle, "p"));
        append_everything_once(file);
    }

    static void expect_write_error(int expected, int status)
    {
        const int reason = errno;
        EXPECT_EQ(TDMS_WRITE, status);
        EXPECT_EQ(expected, reason);
    }

    scratch_file scratch_;
    std::string before_;
    std::string after_;
};

TEST_F(Saving, AWriteThatStopsAtAnyByteLeavesTheLastSave)
{
    const auto size = static_cast<std::int64_t>(after_.size() - before_.size());
    for (std::int64_t byte = 0; byte != size; ++byte) {
        SCOPED_TRACE(byte);
        scratch_.fill(before_);
        tdms_file file(scratch_, "a");
        append_again(file);
        room = byte;
        expect_write_error(ENOSPC, tdms_save(file.handle));
        ASSERT_EQ(before_, scratch_.bytes());
        EXPECT_EQ(2u, found_and_lost(file.channel("g", "double")).first);
        room = -1;
        EXPECT_EQ(0, tdms_save(file.handle));
        EXPECT_EQ(4u, found_and_lost(file.channel("g", "double")).first);
        EXPECT_EQ(0, tdms_close(&file.handle));
        ASSERT_EQ(after_, scratch_.bytes());
    }
}

// A file that cannot even be cut back is, as soon as that works again; closing tries once more.
TEST_F(Saving, CuttingBackIsMadeUpFor)
{
    for (const bool closed_at_once : {false, true}) {
        scratch_.fill(before_);
        tdms_file file(scratch_, "a");
        append_again(file);
        room = 100;
        truncating_fails = true;
        expect_write_error(ENOSPC, tdms_save(file.handle));
        EXPECT_EQ(before_.size() + 100, scratch_.bytes().size());
        room = -1;
        expect_write_error(EIO, tdms_save(file.handle));
        expect_write_error(EIO, tdms_sync(file.handle));
        truncating_fails = false;
        if (!closed_at_once) {
            EXPECT_EQ(0, tdms_save(file.handle));
        }
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(closed_at_once ? before_ : after_, scratch_.bytes());
    }
}

// Passing the limit would end the process by a signal.
TEST_F(Saving, ALimitOfFileSizes)
{
    scratch_.fill(before_);
    tdms_file file(scratch_, "a");
    append_again(file);
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
    const rlimit small{after_.size() - 1, limit.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    expect_write_error(EFBIG, tdms_save(file.handle));
    EXPECT_EQ(before_, scratch_.bytes());
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    file.save_and_close();
    EXPECT_EQ(after_, scratch_.bytes());
}

// On one handle, save_file() hides what it could not write; the next call of the other interface
// reports it, and goes on after what is intact.
TEST_F(Saving, WhatSaveFileCouldNotWriteIsReported)
{
    for (const bool read_first : {false, true}) {
        scratch_.fill(before_);
        open_tdms file(scratch_, "a");
        void* const channel = file.channel(0, 0);
        const double values[] = {1, 2};
        EXPECT_EQ(0, set_channel_data_double(channel, 2, values));
        rlimit limit{};
        ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
        const rlimit small{before_.size() + 40, limit.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
        EXPECT_EQ(0, save_file(file.handle));
        if (read_first) {
            EXPECT_EQ(2u, found_and_lost(channel).first);
        }
        EXPECT_EQ(TDMS_WRITE, tdms_save(file.handle));
        ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
        EXPECT_EQ(before_, scratch_.bytes());
        EXPECT_EQ(0, tdms_append_double(channel, 2, values));
        EXPECT_EQ(0, tdms_save(file.handle));
        EXPECT_EQ(4u, found_and_lost(channel).first);
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(4u, found_and_lost(tdms_file(scratch_, "r").channel("g", "double")).first);
    }
}

TEST(SavingToADevice, ThatIsFullIsReported)
{
    void* file = nullptr;
    void* group = nullptr;
    ASSERT_EQ(0, tdms_open("/dev/full", "w", &file));
    ASSERT_EQ(0, tdms_create_group(file, "g", &group));
    EXPECT_EQ(TDMS_WRITE, tdms_save(file));
    EXPECT_EQ(TDMS_WRITE, tdms_close(&file));
    EXPECT_EQ(nullptr, file) << "closed all the same";
}

// What a device has failed to take once, the system counts as written; the handle does not.
TEST(Syncing, AFailureIsForGood)
{
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    file.channel("g", "c");
    EXPECT_EQ(0, tdms_sync(file.handle));
    EXPECT_EQ(0, tdms_save(file.handle));
    EXPECT_EQ(0, tdms_sync(file.handle));
    for (const bool fails : {true, false}) {
        syncing_fails = fails;
        EXPECT_EQ(TDMS_WRITE, tdms_sync(file.handle));
        EXPECT_EQ(EIO, errno);
    }
    EXPECT_EQ(0, tdms_save(file.handle));
}

// Only what is new is written, each value once; then nothing is.
TEST(SavingOnce, WritesWhatIsNewAndItsBytes)
{
    const scratch_file scratch;
    tdms_file file(scratch, "w");
    void* const late = file.channel("h", "late");
    void* const channel = file.channel("g", "c");
    const std::int32_t values[] = {7, 8, 9};
    const char* const texts[] = {"ab", "", "c"};
    EXPECT_EQ(0, tdms_append_int32(channel, 2, values));
    EXPECT_EQ(0, tdms_append_int32(channel, 1, values + 2));
    EXPECT_EQ(0, tdms_append_string(file.channel("g", "s"), 3, texts));
    const std::int64_t one_second = 1000000000;
    EXPECT_EQ(0, tdms_append_nanoseconds(file.channel("h", "t"), 1, &one_second));
    EXPECT_EQ(0, tdms_append_nanoseconds(file.channel("h", "u"), 1, &one_second));
    EXPECT_EQ(0, create_channel_property_int8(channel, "p", 1));
    EXPECT_EQ(0, tdms_save(file.handle));
    const std::string seconds = u64(0) + u64(2082844801);
    const std::string first =
        segment({object("/", none), object("/'g'", none), object("/'h'", none),
                 object("/'g'/'c'", fixed_index(3, 3), u32(1) + text("p") + u32(1) + "\x01"),
                 object("/'g'/'s'", string_index(3, 15)), object("/'h'/'late'", none),
                 object("/'h'/'t'", fixed_index(68, 1)), object("/'h'/'u'", fixed_index(68, 1))},
                u32(7) + u32(8) + u32(9) + u32(2) + u32(2) + u32(3) + "abc" + seconds + seconds);
    EXPECT_EQ(first, scratch.bytes());
    EXPECT_EQ(0, tdms_save(file.handle));
    EXPECT_EQ(first, scratch.bytes());

    // A property that was saved can still be read, and be replaced; a type alone is saved, too.
    std::int8_t p = 0;
    EXPECT_EQ(0, get_channel_property_int8(channel, "p", &p));
    EXPECT_EQ(0, create_channel_property_int8(channel, "p", 2));
    EXPECT_EQ(TDMS_CHANNEL_PROPERTY_REPEATED, create_channel_property_int8(channel, "p", 3));
    EXPECT_EQ(0, tdms_append_double(late, 0, nullptr));
    EXPECT_EQ(0, tdms_save(file.handle));
    const std::string second =
        segment({object("/'g'/'c'", none, u32(1) + text("p") + u32(1) + "\x02"),
                 object("/'h'/'late'", fixed_index(10, 0))});
    EXPECT_EQ(first + second, scratch.bytes());
    // save_file() finds nothing staged.
    EXPECT_EQ(0, save_file(file.handle));
    EXPECT_EQ(0, tdms_close(&file.handle));
    const open_tdms again(scratch, "r");
    EXPECT_EQ(3u, value_count(again.channel(0, 0)));
}

// What the first interface lets a program add, and no reader would give back, is not written.
TEST(SavingOnce, NothingThatCannotBeReadBack)
{
    const scratch_file scratch;
    tdms_file file(scratch, "w");
    const std::int32_t value = 1;
    void* channel = file.channel("g", "c");
    EXPECT_EQ(0, tdms_append_int32(channel, 1, &value));
    EXPECT_EQ(0, tdms_save(file.handle));
    const std::string intact = scratch.bytes();
    void* group = nullptr;
    EXPECT_EQ(0, create_group(file.handle, "a/", &group));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_save(file.handle));
    EXPECT_EQ(0, delete_group(group));
    // A channel that left memory keeps its type and its values in the file.
    EXPECT_EQ(0, delete_channel(channel));
    channel = file.channel("g", "c");
    const double other = 2;
    EXPECT_EQ(1u, found_and_lost(channel).first);
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_append_double(channel, 1, &other));
    EXPECT_EQ(0, set_channel_data_double(channel, 1, &other));
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_save(file.handle));
    EXPECT_EQ(intact, scratch.bytes());
    EXPECT_EQ(0, delete_channel(channel));
    EXPECT_EQ(0, tdms_append_int32(file.channel("g", "c"), 1, &value));
    file.save_and_close();
    EXPECT_EQ(2u, found_and_lost(tdms_file(scratch, "r").channel("g", "c")).first);
}

}  // namespace
