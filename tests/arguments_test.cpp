// Every function of the second interface with null arguments, handles of each kind, in each mode;
// what is rejected leaves everything as it was.
#include <sys/stat.h>

#include <cctype>
#include <functional>

#include "elements.h"
#include "hostile_files.h"
#include "support.h"

namespace {

TEST(Arguments, EveryStatusHasASentence)
{
    std::vector<std::string> sentences{tdms_status_text(0), tdms_status_text(1)};
    for (int status = -5105; status != -5100; ++status) {
        sentences.emplace_back(tdms_status_text(status));
    }
    for (int status = -5023; status != -5000; ++status) {
        sentences.emplace_back(tdms_status_text(status));
    }
    for (const std::string& each : sentences) {
        EXPECT_TRUE(std::isupper(each.front()) != 0 && each.back() == '.') << each;
        EXPECT_EQ(1, std::count(sentences.begin(), sentences.end(), each)) << each;
    }
    for (const int other : {-1, -5000, -5024, -5100, -5106}) {
        EXPECT_EQ(sentences[1], tdms_status_text(other));
    }
}

using call = std::function<int(void*)>;
struct calls_of_level {
    std::vector<call> changing;
    std::vector<call> with_null;  // of the other arguments, or one that is not allowed
};

void* made;
const char* got;
std::uint64_t number;
std::int64_t nanoseconds;

#define PROPERTY_CALLS(level)                                                                      \
    {                                                                                              \
        {[](void* h) { return tdms_create_##level##_property_nanoseconds(h, "t", 5); }},           \
        {                                                                                          \
            [](void* h) { return tdms_create_##level##_property_nanoseconds(h, nullptr, 5); },     \
                [](void* h) { return tdms_get_##level##_property_nanoseconds(h, "s", nullptr); },  \
                [](void* h) {                                                                      \
                    return tdms_get_##level##_property_nanoseconds(h, nullptr, &nanoseconds);      \
                },                                                                                 \
                [](void* h) {                                                                      \
                    return tdms_get_##level##_property_string(h, "s", nullptr, &number);           \
                },                                                                                 \
                [](void* h) { return tdms_get_##level##_property_string(h, "s", &got, nullptr); }, \
                [](void* h) {                                                                      \
                    return tdms_get_##level##_property_string(h, nullptr, &got, &number);          \
                }                                                                                  \
        }                                                                                          \
    }

std::array<calls_of_level, 3> all_calls()
{
    calls_of_level file = PROPERTY_CALLS(file);
    calls_of_level group = PROPERTY_CALLS(group);
    calls_of_level channel = PROPERTY_CALLS(channel);
    const auto add = [](std::vector<call>& to, std::initializer_list<call> calls) {
        to.insert(to.end(), calls);
    };
    add(file.changing,
        {tdms_save, tdms_sync, [](void* h) { return tdms_create_group(h, "new", &made); }});
    add(file.with_null, {[](void* h) { return tdms_create_group(h, nullptr, &made); },
                         [](void* h) { return tdms_create_group(h, "n", nullptr); },
                         [](void* h) { return tdms_create_group(h, "a/b", &made); },
                         [](void* h) { return tdms_find_group(h, nullptr, &made); },
                         [](void* h) { return tdms_find_group(h, "g", nullptr); }});
    add(group.changing, {[](void* h) { return tdms_create_channel(h, "new", &made); }});
    add(group.with_null, {[](void* h) { return tdms_create_channel(h, nullptr, &made); },
                          [](void* h) { return tdms_create_channel(h, "n", nullptr); },
                          [](void* h) { return tdms_create_channel(h, "/", &made); },
                          [](void* h) { return tdms_find_channel(h, nullptr, &made); },
                          [](void* h) { return tdms_find_channel(h, "c", nullptr); },
                          [](void* h) { return tdms_get_group_name(h, &got, nullptr); },
                          [](void* h) { return tdms_get_group_name(h, nullptr, &number); }});
    add(channel.changing, {[](void* h) { return tdms_append_nanoseconds(h, 0, nullptr); }});
    add(channel.with_null, {[](void* h) { return tdms_get_channel_name(h, &got, nullptr); },
                            [](void* h) { return tdms_get_channel_name(h, nullptr, &number); },
                            [](void* h) { return tdms_get_string_size(h, 0, 0, nullptr); },
                            [](void* h) { return tdms_append_nanoseconds(h, 1, nullptr); },
                            [](void* h) { return tdms_read_nanoseconds(h, 0, 1, nullptr); },
                            [](void* h) { return tdms_read_string(h, 0, 0, nullptr, 0, nullptr); },
                            [](void* h) { return tdms_read_string(h, 0, 0, nullptr, 1, &got); },
                            [](void* h) {
                                const char* const texts[] = {"a", nullptr};
                                return tdms_append_string(h, 2, texts);
                            }});
    for_each_element([&]<class Element>(Element) {
        add(channel.changing, {[](void* h) { return Element::append(h, 0, nullptr); }});
        add(channel.with_null, {[](void* h) { return Element::append(h, 1, nullptr); }});
        if constexpr (Element::code == TDMS_TYPE_STRING) return;
        add(channel.with_null, {[](void* h) { return Element::read(h, 0, 1, nullptr); }});
    });
    return {file, group, channel};
}

// A file of one channel with a value, and a string property on each level.
void fill(const scratch_file& scratch)
{
    tdms_file file(scratch, "w");
    const std::int32_t value = 7;
    void* const channel = file.channel("g", "c");
    void* group = nullptr;
    EXPECT_EQ(0, tdms_append_int32(channel, 1, &value));
    EXPECT_EQ(0, tdms_find_group(file.handle, "g", &group));
    EXPECT_EQ(0, create_file_property_string(file.handle, "s", "text"));
    EXPECT_EQ(0, create_group_property_string(group, "s", "text"));
    EXPECT_EQ(0, create_channel_property_string(channel, "s", "text"));
    file.save_and_close();
}

void check_properties(const std::array<void*, 3>& handles)
{
    EXPECT_EQ(TDMS_FILE_PROPERTY_NAME,
              tdms_get_file_property_string(handles[0], "x", &got, &number));
    EXPECT_EQ(TDMS_GROUP_PROPERTY_NAME,
              tdms_get_group_property_nanoseconds(handles[1], "x", &nanoseconds));
    EXPECT_EQ(TDMS_DATATYPE, tdms_get_channel_property_nanoseconds(handles[2], "s", &nanoseconds));
    EXPECT_EQ(0, tdms_get_channel_property_string(handles[2], "s", &got, &number));
    EXPECT_EQ(std::string("text"), got);
    EXPECT_EQ(4u, number);
}

TEST(Arguments, NullAndHandlesOfEachKindInEachMode)
{
    const scratch_file scratch;
    fill(scratch);
    const std::string before = scratch.bytes();
    for (const std::string mode : {"r", "a", "partial", "first r", "first none"}) {
        SCOPED_TRACE(mode);
        file_handle file;
        if (mode == "partial") {
            ASSERT_EQ(0, tdms_open_partial(scratch.path(), &file.handle, nullptr));
        } else if (mode.starts_with("first ")) {
            ASSERT_EQ(0, open_file(scratch.path(), mode.c_str() + 6, &file.handle));
        } else {
            ASSERT_EQ(0, tdms_open(scratch.path(), mode.c_str(), &file.handle));
        }
        std::array<void*, 3> handles = {file.handle};
        if (mode == "first none") {
            EXPECT_EQ(0, create_group(handles[0], "g", &handles[1]));
            EXPECT_EQ(0, create_channel(handles[1], "c", &handles[2]));
        } else {
            EXPECT_EQ(0, tdms_find_group(handles[0], "g", &handles[1]));
            EXPECT_EQ(0, tdms_find_channel(handles[1], "c", &handles[2]));
            check_properties(handles);
        }
        const std::array<calls_of_level, 3> all = all_calls();
        for (std::size_t level = 0; level != 3; ++level) {
            void* const others[] = {nullptr, handles[(level + 1) % 3], handles[(level + 2) % 3]};
            for (const auto* const list : {&all[level].changing, &all[level].with_null}) {
                for (const call& each : *list) {
                    for (void* const other : others) EXPECT_EQ(TDMS_ARGUMENT, each(other));
                    if (list == &all[level].changing && mode != "a") {
                        EXPECT_EQ(TDMS_FILE_HANDLE, each(handles[level]));
                    }
                    if (list == &all[level].with_null && mode == "a") {
                        EXPECT_EQ(TDMS_ARGUMENT, each(handles[level]));
                    }
                }
            }
        }
        EXPECT_EQ(1, get_num_group(handles[0]));
        EXPECT_EQ(TDMS_ARGUMENT, tdms_close(&handles[1])) << "no file";
        void* copy = handles[0];
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(nullptr, file.handle);
        for (void** const closed : {&file.handle, &copy, static_cast<void**>(nullptr)}) {
            EXPECT_EQ(TDMS_ARGUMENT, tdms_close(closed));
        }
    }
    EXPECT_EQ(before, scratch.bytes());
    void* file = nullptr;
    EXPECT_EQ(TDMS_ARGUMENT, tdms_open(nullptr, "r", &file));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_open(scratch.path(), nullptr, &file));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_open(scratch.path(), "r", nullptr));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_open(scratch.path(), "rw", &file));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_open_partial(nullptr, &file, nullptr));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_open_partial(scratch.path(), nullptr, nullptr));
    EXPECT_EQ(nullptr, file);
}

TEST(Arguments, NamesAndRanges)
{
    const scratch_file scratch;
    fill(scratch);
    const tdms_file file(scratch, "a");
    void* group = nullptr;
    EXPECT_EQ(TDMS_GROUP_REPEATED, tdms_create_group(file.handle, "g", &group));
    EXPECT_EQ(TDMS_GROUP_HANDLE, tdms_find_group(file.handle, "x", &group));
    EXPECT_EQ(nullptr, group);
    EXPECT_EQ(0, tdms_find_group(file.handle, "g", &group));
    EXPECT_EQ(TDMS_CHANNEL_REPEATED, tdms_create_channel(group, "c", &made));
    EXPECT_EQ(TDMS_CHANNEL_HANDLE, tdms_find_channel(group, "x", &made));
    void* const channel = file.channel("g", "c");
    std::int32_t value = 0;
    constexpr std::uint64_t most = ~std::uint64_t{0};
    EXPECT_EQ(0, tdms_read_int32(channel, 1, 0, nullptr));
    EXPECT_EQ(TDMS_RANGE, tdms_read_int32(channel, 2, 0, nullptr));
    EXPECT_EQ(TDMS_RANGE, tdms_read_int32(channel, 1, most, &value));
    EXPECT_EQ(TDMS_RANGE, tdms_read_int32(channel, most, 2, &value));
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_read_uint32(channel, 0, 0, nullptr));
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_append_double(channel, 0, nullptr));
    EXPECT_EQ(TDMS_MEMORY, tdms_append_int32(channel, most / 8, &value));
    EXPECT_EQ(0, tdms_read_string(file.channel("g", "untyped"), 0, 0, nullptr, 0, &got));
    EXPECT_EQ(0, tdms_read_nanoseconds(file.channel("g", "untyped"), 0, 0, nullptr));
    EXPECT_EQ(0, tdms_save(file.handle));
    EXPECT_EQ(std::pair(1ul, 0ul), found_and_lost(channel)) << "nothing was appended";

    // Names as a foreign file has them: without quotes, with a zero byte.
    const scratch_file foreign(segment(
        {object("/ab", none), object(std::string("/'a\0b'", 6), none), object("/ab/cde", none)}));
    const tdms_file read(foreign, "r");
    EXPECT_EQ(0, tdms_find_group(read.handle, "", &group)) << "/ab";
    EXPECT_EQ(0, tdms_find_channel(group, "d", &made)) << "/ab/cde";
    void* groups[2] = {};
    EXPECT_EQ(0, get_group(read.handle, groups));
    EXPECT_EQ(0, tdms_get_group_name(groups[0], &got, &number));
    EXPECT_EQ(std::string("a\0b", 3), std::string(got, number));
    EXPECT_EQ('\0', got[number]);
}

// Each kind of rejected opening, 500 times: no descriptor stays, no byte and no handle changes.
TEST(Arguments, RejectedOpenings)
{
    const auto descriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const scratch_file scratch;
    const scratch_file locked("");
    const scratch_file none;
    const tdms_file holder(locked, "w");
    ASSERT_EQ(0, holder.status);
    const tdms_file viewer(locked, "r");
    EXPECT_EQ(0, viewer.status) << "reading does not mind the lock";
    std::vector<std::tuple<std::string, const char*, int, int>> rows{
        {locked.path(), "w", TDMS_FILE_PATH, EWOULDBLOCK},
        {locked.path(), "a", TDMS_FILE_PATH, EWOULDBLOCK},
        {none.path(), "r", TDMS_FILE_PATH, ENOENT},
        {none.path(), "a", TDMS_FILE_PATH, ENOENT},
        {"/", "r", TDMS_FILE_PATH, EISDIR},
        {"/", "w", TDMS_FILE_PATH, EISDIR},
        {"/nowhere/at/all", "w", TDMS_FILE_PATH, ENOENT}};
    for (const hostile_file& file : files_to_open()) {
        if (file.expected == 0) continue;
        const int expected = file.expected == failed_lookup ? TDMS_DATATYPE : file.expected;
        for (const char* const mode : {"r", "a"}) rows.emplace_back(file.bytes, mode, expected, 0);
    }
    for (const auto& [path_or_bytes, mode, expected, error] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::pair(path_or_bytes, mode)));
        const bool exists = error == 0;
        if (exists) scratch.fill(path_or_bytes);
        const auto open = descriptors();
        void* file = nullptr;
        for (int i = 0; i != 500; ++i) {
            errno = 0;
            const char* const path = exists ? scratch.path() : path_or_bytes.c_str();
            ASSERT_EQ(expected, tdms_open(path, mode, &file));
            if (!exists) {
                ASSERT_EQ(error, errno);
            }
            if (exists && *mode == 'r') tdms_open_partial(path, &file, nullptr);
            if (file != nullptr) tdms_close(&file);
        }
        EXPECT_EQ(open, descriptors());
        if (exists) {
            EXPECT_EQ(path_or_bytes, scratch.bytes());
        }
    }
    EXPECT_FALSE(std::filesystem::exists(none.path()));
    // A pipe that nobody writes to is rejected without waiting.
    ASSERT_EQ(0, mkfifo(none.path(), 0600));
    void* file = nullptr;
    for (const char* const mode : {"r", "w", "a"}) {
        EXPECT_EQ(TDMS_FILE_PATH, tdms_open(none.path(), mode, &file));
        EXPECT_EQ(ESPIPE, errno);
    }
}

}  // namespace
