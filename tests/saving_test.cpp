// What the system does not take: a write that stops at any byte, a limit of file sizes, a full
// device. The functions defined here replace those of the C library.
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <numeric>

#include "elements.h"
#include "streams.h"
#include "support.h"

namespace {

// How many bytes the system still takes; -1 for all.
std::int64_t room = -1;
bool truncating_fails = false;
bool syncing_fails = false;
bool reading_fails = false;

}  // namespace

extern "C" ssize_t write(int file, const void* bytes, std::size_t count)
{
    REAL(write);
    static int writes = 0;
    errno = ++writes % 5 == 0 ? EINTR : ENOSPC;
    if (errno == EINTR || room == 0) return -1;
    if (room > 0) count = std::min(count, static_cast<std::size_t>(room));
    const ssize_t part = real(file, bytes, count);
    if (room > 0) room -= part;
    return part;
}

extern "C" int ftruncate(int file, off_t size) noexcept
{
    REAL(ftruncate);
    errno = EIO;
    return truncating_fails ? -1 : real(file, size);
}

extern "C" ssize_t pread(int file, void* bytes, std::size_t count, off_t offset)
{
    REAL(pread);
    errno = EIO;
    return reading_fails ? -1 : real(file, bytes, count, offset);
}

extern "C" int fdatasync(int file)
{
    REAL(fdatasync);
    errno = EIO;
    return syncing_fails ? -1 : real(file);
}

namespace {

// A save of everything that there is to save, in two groups.
void append_everything_once(const tdms_file& file)
{
    for_each_element([&]<class Element>(Element) {
        void* const channel = file.channel(Element::code % 2 == 0 ? "g" : "h", Element::name);
        EXPECT_EQ(0, Element::append(channel, 2, Element::samples));
    });
    EXPECT_EQ(0, create_file_property_string(file.handle, "p", "a string"));
}

struct resource_limit {
    resource_limit(__rlimit_resource resource, std::size_t size) : what(resource)
    {
        std::signal(SIGXFSZ, SIG_DFL);
        EXPECT_EQ(0, getrlimit(what, &before));
        const rlimit limit{size, before.rlim_max};
        EXPECT_EQ(0, setrlimit(what, &limit));
    }
    ~resource_limit() { setrlimit(what, &before); }
    resource_limit(resource_limit&&) = delete;

    __rlimit_resource what;
    rlimit before{};
};

// A file as it was, and what is to be saved next: not the property, whose name is there already.
struct next_save : tdms_file {
    next_save(const scratch_file& scratch, const std::string& before)
        : tdms_file((scratch.fill(before), scratch), "a")
    {
        EXPECT_EQ(TDMS_FILE_PROPERTY_REPEATED, create_file_property_int8(handle, "p", 1));
        EXPECT_EQ(0, delete_file_property(handle, "p"));
        append_everything_once(*this);
    }
};

// Files with one save of everything, and with two.
class Saving : public testing::Test {
  protected:
    void SetUp() override
    {
        set_time_zone("UTC");
        tdms_file first(scratch_, "w");
        append_everything_once(first);
        first.save_and_close();
        before_ = scratch_.bytes();
        next_save(scratch_, before_).save_and_close();
        after_ = scratch_.bytes();
    }

    static void expect_write_error(int expected, int status)
    {
        EXPECT_EQ(std::pair(int{TDMS_WRITE}, expected), std::pair(status, errno));
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
        next_save file(scratch_, before_);
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

// A file that cannot even be cut back is, as soon as that works again; closing tries once more. One
// that another program has made too short by then is left alone.
TEST_F(Saving, CuttingBackIsMadeUpFor)
{
    for (const std::string next : {"saving", "closing", "another program"}) {
        SCOPED_TRACE(next);
        next_save file(scratch_, before_);
        room = 100;
        truncating_fails = true;
        expect_write_error(ENOSPC, tdms_save(file.handle));
        EXPECT_EQ(before_.size() + 100, scratch_.bytes().size());
        room = -1;
        expect_write_error(EIO, tdms_save(file.handle));
        expect_write_error(EIO, tdms_sync(file.handle));
        truncating_fails = false;
        if (next == "saving") {
            EXPECT_EQ(0, tdms_save(file.handle));
        } else if (next == "another program") {
            std::filesystem::resize_file(scratch_.path(), 10);
            expect_write_error(ESTALE, tdms_save(file.handle));
            expect_write_error(ESTALE, tdms_close(&file.handle));
            EXPECT_EQ(before_.substr(0, 10), scratch_.bytes());
            continue;
        }
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(next == "saving" ? after_ : before_, scratch_.bytes());
    }
}

// Passing the limit would end the process by a signal.
TEST_F(Saving, ALimitOfFileSizes)
{
    next_save file(scratch_, before_);
    {
        const resource_limit limit(RLIMIT_FSIZE, after_.size() - 1);
        expect_write_error(EFBIG, tdms_save(file.handle));
    }
    EXPECT_EQ(before_, scratch_.bytes());
    file.save_and_close();
    EXPECT_EQ(after_, scratch_.bytes());
}

// On one handle, save_file() hides what it could not write; the next call of the other interface
// reports it, and goes on after what is intact.
TEST_F(Saving, WhatSaveFileCouldNotWriteIsReported)
{
    for (const std::size_t cut : {28, 40, 62, 100}) {
        SCOPED_TRACE(cut);
        scratch_.fill(before_);
        tdms_file file(scratch_, "a");
        void* const channel = file.channel("g", "double");
        const double values[] = {1, 2};
        const auto save_with_too_little_room = [&] {
            const resource_limit limit(RLIMIT_FSIZE, scratch_.bytes().size() + cut);
            std::signal(SIGXFSZ, SIG_IGN);
            EXPECT_EQ(0, save_file(file.handle));
        };
        EXPECT_EQ(0, set_channel_data_double(channel, 2, values));
        save_with_too_little_room();
        // With room again, a save completes what was cut short, by bytes of its own. What cannot be
        // read is not taken for something that must go.
        EXPECT_EQ(0, save_file(file.handle));
        const std::string mixed_up = scratch_.bytes();
        reading_fails = true;
        expect_write_error(EIO, tdms_save(file.handle));
        reading_fails = false;
        EXPECT_EQ(mixed_up, scratch_.bytes());
        EXPECT_EQ(2u, found_and_lost(channel).first);
        expect_write_error(EFBIG, tdms_save(file.handle));
        EXPECT_EQ(before_, scratch_.bytes());
        expect_each(0, {tdms_append_double(channel, 2, values), tdms_save(file.handle)});
        EXPECT_EQ(4u, found_and_lost(channel).first);
        const std::string intact = scratch_.bytes();
        save_with_too_little_room();
        expect_write_error(EFBIG, tdms_close(&file.handle));
        EXPECT_TRUE(scratch_.bytes().starts_with(intact));
        EXPECT_EQ(4u, found_and_lost(tdms_file(scratch_, "r").channel("g", "double")).first);
    }
}

// What another program does to the file, in spite of the lock, is neither built on nor cut away.
TEST_F(Saving, AFileThatAnotherProgramChanged)
{
    for (const std::string& changed : {before_.substr(0, 10), before_ + segment({})}) {
        next_save file(scratch_, before_);
        scratch_.fill(changed);
        expect_write_error(ESTALE, tdms_save(file.handle));
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(changed, scratch_.bytes());
    }
}

// The count of what is staged is not that of what the first functions read, and the end of the file
// is known without a second descriptor.
TEST_F(Saving, MixedOnOneHandle)
{
    const char* const strings[] = {"longer than what the file has", "and another"};
    {
        tdms_file file(scratch_, "a");
        const char* read[4];
        void* const channel = file.channel("g", "string");
        expect_each(0, {tdms_append_string(channel, 1, strings),
                        get_channel_data_string(channel, read), tdms_save(file.handle)});
        EXPECT_EQ(0, tdms_read_string(channel, 4, 1, read));
        EXPECT_STREQ(strings[0], read[0]);
    }
    open_tdms file(scratch_, "a");
    void* channel = nullptr;
    EXPECT_EQ(0, tdms_find_channel(file.group(0), "string", &channel));
    for (void* const g : groups_of(file.handle)) {
        for (void* const c : channels_of(g)) {
            for_each_element([c]<class Element>(Element) { Element::set(c, 0, nullptr); });
        }
    }
    EXPECT_EQ(0, set_channel_data_string(channel, 2, strings));
    {
        const resource_limit limit(RLIMIT_NOFILE, 3);
        expect_each(0, {save_file(file.handle), tdms_append_string(channel, 1, strings),
                        tdms_save(file.handle)});
        std::uint64_t count = 0;
        EXPECT_EQ(TDMS_CHANNEL_DATA_READ, tdms_get_num_values(channel, &count, nullptr));
    }
    EXPECT_EQ(8u, found_and_lost(channel).first);
}

TEST_F(Saving, ToADeviceThatIsFull)
{
    void* file = nullptr;
    void* group = nullptr;
    expect_each(0, {tdms_open("/dev/full", "w", &file), tdms_create_group(file, "g", &group)});
    expect_each(TDMS_WRITE, {tdms_save(file), tdms_close(&file)});
    EXPECT_EQ(nullptr, file) << "closed all the same";
}

// What a device has failed to take once, the system counts as written; the handle does not.
TEST_F(Saving, AFailedSyncIsForGood)
{
    const next_save file(scratch_, before_);
    expect_each(0, {tdms_sync(file.handle), tdms_save(file.handle), tdms_sync(file.handle)});
    for (const bool fails : {true, false}) {
        syncing_fails = fails;
        expect_write_error(EIO, tdms_sync(file.handle));
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
    const char* const strings[] = {"ab", "", "c"};
    const std::int64_t one_second = 1000000000;
    expect_each(0,
                {tdms_append_int32(channel, 2, values), tdms_append_int32(channel, 1, values + 2),
                 tdms_append_string(file.channel("g", "s"), 3, strings),
                 tdms_append_nanoseconds(file.channel("h", "t"), 1, &one_second),
                 tdms_append_nanoseconds(file.channel("h", "u"), 1, &one_second),
                 create_channel_property_int8(channel, "p", 1), tdms_save(file.handle)});
    const std::string seconds = u64(0) + u64(2082844801);
    const std::string first =
        segment({object("/", none), object("/'g'", none), object("/'h'", none),
                 object("/'g'/'c'", fixed_index(3, 3), property_p(1, "\x01")),
                 object("/'g'/'s'", string_index(3, 15)), object("/'h'/'late'", none),
                 object("/'h'/'t'", fixed_index(68, 1)), object("/'h'/'u'", fixed_index(68, 1))},
                u32(7) + u32(8) + u32(9) + u32(2) + u32(2) + u32(3) + "abc" + seconds + seconds);
    EXPECT_EQ(first, scratch.bytes());
    EXPECT_EQ(0, tdms_save(file.handle));
    EXPECT_EQ(first, scratch.bytes());

    // A property that was saved can still be read, and be replaced; a type alone is saved, too.
    std::int8_t p = 0;
    expect_each(0, {get_channel_property_int8(channel, "p", &p),
                    create_channel_property_int8(channel, "p", 2)});
    EXPECT_EQ(TDMS_CHANNEL_PROPERTY_REPEATED, create_channel_property_int8(channel, "p", 3));
    file.group("i");
    expect_each(
        0, {tdms_append_double(late, 0, nullptr), tdms_save(file.handle), tdms_save(file.handle)});
    const std::string second =
        segment({object("/'i'", none), object("/'g'/'c'", none, property_p(1, "\x02")),
                 object("/'h'/'late'", fixed_index(10, 0))});
    EXPECT_EQ(first + second, scratch.bytes());
    // save_file() finds nothing staged, and what it writes of a group is not written again.
    EXPECT_EQ(0, create_group_property_int8(file.group("j"), "p", 3));
    EXPECT_EQ(0, save_file(file.handle));
    const std::string third = scratch.bytes();
    expect_each(0, {tdms_save(file.handle), tdms_close(&file.handle)});
    EXPECT_EQ(third, scratch.bytes());
    EXPECT_EQ(3u, value_count(open_tdms(scratch, "r").channel(0, 0)));
}

// Large blocks are written from where they are staged, between others: in their order, and
// completely or not at all.
TEST(SavingOnce, LargeBlocks)
{
    const std::uint64_t counts[] = {1, 20000, 2, 30000, 20000, 3};
    std::vector<double> values(30010);
    std::iota(values.begin(), values.end(), 0.5);
    std::vector<std::string> objects{object("/", none), object("/'g'", none)};
    std::string raw;
    for (std::size_t i = 0; i != std::size(counts); ++i) {
        objects.push_back(object("/'g'/'" + std::to_string(i) + "'", fixed_index(10, counts[i])));
        raw.append(reinterpret_cast<const char*>(values.data() + i), 8 * counts[i]);
    }
    const std::string expected = segment(objects, raw);
    for (const std::int64_t end : {1, 400, 1000, 160'400, 200'000, 540'000}) {
        const scratch_file scratch;
        tdms_file file(scratch, "w");
        for (std::size_t i = 0; i != std::size(counts); ++i) {
            void* const channel = file.channel("g", std::to_string(i).c_str());
            EXPECT_EQ(0, tdms_append_double(channel, counts[i], values.data() + i));
        }
        room = end;
        EXPECT_EQ(TDMS_WRITE, tdms_save(file.handle));
        EXPECT_EQ("", scratch.bytes());
        room = -1;
        file.save_and_close();
        EXPECT_TRUE(expected == scratch.bytes()) << end;
    }
}

// What the first interface lets a program add, and no reader would give back, is not written: a
// channel that left memory, or was replaced, keeps its type and its values in the file.
TEST(SavingOnce, NothingThatCannotBeReadBack)
{
    const scratch_file scratch;
    const std::string intact = segment({object("/'g'", none), int32s("/'g'/'c'", 1)}, u32(1));
    const std::int32_t value = 1;
    const double other = 2;
    for (const std::string way : {"replaced", "deleted", "deleted with its group"}) {
        SCOPED_TRACE(way);
        scratch.fill(intact);
        tdms_file file(scratch, "a");
        void* channel = file.channel("g", "c");
        void* group = file.group("g");
        const int removed = way == "replaced"  ? create_channel(group, "c", &channel)
                            : way == "deleted" ? delete_channel(channel)
                                               : delete_group(group);
        EXPECT_EQ(0, removed);
        channel = file.channel("g", "c");
        EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_append_double(channel, 1, &other));
        EXPECT_EQ(0, set_channel_data_double(channel, 1, &other));
        EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_save(file.handle));
        EXPECT_EQ(0, delete_channel(channel));
        EXPECT_EQ(0, create_group(file.handle, "a/", &group));
        EXPECT_EQ(TDMS_ARGUMENT, tdms_save(file.handle)) << "a slash in a group's name";
        EXPECT_EQ(intact, scratch.bytes());
        expect_each(0, {delete_group(group), tdms_append_int32(file.channel("g", "c"), 1, &value)});
        file.save_and_close();
        EXPECT_EQ(2u, found_and_lost(tdms_file(scratch, "r").channel("g", "c")).first);
    }
    // A reader would take the group for a channel, and its channel for one of another group.
    tdms_file file(scratch, "w");
    void* group = nullptr;
    void* channel = nullptr;
    expect_each(0, {create_group(file.handle, "g'/'a", &group), save_file(file.handle),
                    tdms_save(file.handle), create_channel(group, "c", &channel)});
    EXPECT_EQ(TDMS_ARGUMENT, tdms_save(file.handle));
}

}  // namespace
