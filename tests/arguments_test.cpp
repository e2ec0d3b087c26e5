// Every function of the second interface with null arguments, handles of each kind, in each mode;
// what is rejected leaves everything as it was.
#include <sys/stat.h>

#include <cctype>
#include <tuple>

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

// An argument that is allowed, of each type; of pointers to memory that is large enough.
template <class T>
T allowed()
{
    static std::int64_t memory[16];
    if constexpr (std::is_same_v<T, const char*>)
        return "s";
    else if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(memory);
    else
        return 1;
}

// The handles of one file, by kind, and what may be done with it.
struct open_handles {
    std::array<void*, 3> kinds;
    bool writable;
};

// A null in the place of each pointer.
template <std::size_t Null, class... T, std::size_t... I>
void reject_null(int (*function)(void*, T...), void* handle, std::index_sequence<I...>)
{
    if constexpr (std::is_pointer_v<std::tuple_element_t<Null, std::tuple<T...>>>) {
        EXPECT_EQ(TDMS_ARGUMENT, function(handle, (I == Null ? T{} : allowed<T>())...)) << Null;
    }
}
template <class... T, std::size_t... I>
void reject_nulls([[maybe_unused]] int (*function)(void*, T...), [[maybe_unused]] void* handle,
                  [[maybe_unused]] std::index_sequence<I...> all)
{
    (reject_null<I>(function, handle, all), ...);
}

enum kind { of_file, of_group, of_channel };

template <class... T>
void check(const open_handles& open, kind of, int (*function)(void*, T...))
{
    for (void* const other : {open.kinds[(of + 1) % 3], open.kinds[(of + 2) % 3], (void*)nullptr}) {
        EXPECT_EQ(TDMS_ARGUMENT, function(other, allowed<T>()...));
    }
    if (open.writable) reject_nulls(function, open.kinds[of], std::index_sequence_for<T...>());
}

// A function that changes the file, which not every handle allows.
template <class... T>
void check_change(const open_handles& open, kind of, int (*function)(void*, T...))
{
    check(open, of, function);
    if (open.writable) return;
    EXPECT_EQ(TDMS_FILE_HANDLE, function(open.kinds[of], allowed<T>()...));
}

void check_all(const open_handles& open)
{
#define CHECK_PROPERTIES(level)                                       \
    check(open, of_##level, tdms_get_##level##_property_string);      \
    check(open, of_##level, tdms_get_##level##_property_nanoseconds); \
    check_change(open, of_##level, tdms_create_##level##_property_nanoseconds);
    CHECK_PROPERTIES(file)
    CHECK_PROPERTIES(group)
    CHECK_PROPERTIES(channel)
    check_change(open, of_file, tdms_save);
    check_change(open, of_file, tdms_sync);
    check_change(open, of_file, tdms_create_group);
    check(open, of_file, tdms_find_group);
    check_change(open, of_group, tdms_create_channel);
    check(open, of_group, tdms_find_channel);
    check(open, of_group, tdms_get_group_name);
    check(open, of_channel, tdms_get_channel_name);
    check(open, of_channel, tdms_get_string_size);
    check(open, of_channel,
          static_cast<int (*)(void*, std::uint64_t, std::uint64_t, char*, std::uint64_t,
                              const char**)>(tdms_read_string));
    check_change(open, of_channel, tdms_append_nanoseconds);
    check(open, of_channel, tdms_read_nanoseconds);
    for_each_element([&]<class Element>(Element) {
        check_change(open, of_channel, +Element::append);
        if constexpr (Element::code != TDMS_TYPE_STRING) check(open, of_channel, Element::read);
    });
}

TEST(Arguments, NullAndHandlesOfEachKindInEachMode)
{
    const scratch_file scratch;
    tdms_file created(scratch, "w");
    created.channel("g", "c");
    EXPECT_EQ(0, create_file_property_string(created.handle, "s", "text"));
    created.save_and_close();
    const std::string before = scratch.bytes();
    for (const std::string mode : {"r", "a", "partial", "first r", "first none"}) {
        SCOPED_TRACE(mode);
        file_handle file;
        const auto open = mode.starts_with("first ") ? open_file : tdms_open;
        ASSERT_EQ(0, mode == "partial"
                         ? tdms_open_partial(scratch.path(), &file.handle, nullptr)
                         : open(scratch.path(), &mode[mode.rfind(' ') + 1], &file.handle));
        open_handles handles{{file.handle}, mode == "a"};
        auto& [opened, group, channel] = handles.kinds;
        if (mode == "first none") {
            EXPECT_EQ(0, create_group(opened, "g", &group) + create_channel(group, "c", &channel));
        } else {
            EXPECT_EQ(0, tdms_find_group(opened, "g", &group));
            EXPECT_EQ(0, tdms_find_channel(group, "c", &channel));
        }
        check_all(handles);
        EXPECT_EQ(TDMS_ARGUMENT, tdms_close(&group)) << "no file";
        void* copy = opened;
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(nullptr, file.handle);
        for (void** const closed : {&file.handle, &copy, static_cast<void**>(nullptr)}) {
            EXPECT_EQ(TDMS_ARGUMENT, tdms_close(closed));
        }
    }
    EXPECT_EQ(before, scratch.bytes());
    void* file = nullptr;
    expect_each(TDMS_ARGUMENT,
                {tdms_open(nullptr, "r", &file), tdms_open(scratch.path(), nullptr, &file),
                 tdms_open(scratch.path(), "r", nullptr), tdms_open(scratch.path(), "rw", &file),
                 tdms_open_partial(nullptr, &file, nullptr),
                 tdms_open_partial(scratch.path(), nullptr, nullptr)});
    EXPECT_EQ(nullptr, file);
}

TEST(Arguments, NamesRangesAndTypes)
{
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    void* const channel = file.channel("g", "c");
    void* group = nullptr;
    void* found = nullptr;
    const char* got = nullptr;
    std::uint64_t length = 0;
    std::int64_t time = 0;
    std::int32_t value = 7;
    constexpr std::uint64_t most = ~std::uint64_t{0};
    expect_each(0, {tdms_append_int32(channel, 1, &value), tdms_save(file.handle),
                    create_file_property_string(file.handle, "s", "text"),
                    tdms_find_group(file.handle, "g", &group),
                    tdms_get_file_property_string(file.handle, "s", &got, &length)});
    EXPECT_EQ("text", std::string(got, length + 1).substr(0, 4)) << "and a NUL";
    EXPECT_EQ(TDMS_DATATYPE, tdms_get_file_property_nanoseconds(file.handle, "s", &time));
    EXPECT_EQ(TDMS_GROUP_PROPERTY_NAME, tdms_get_group_property_nanoseconds(group, "s", &time));
    EXPECT_EQ(TDMS_GROUP_REPEATED, tdms_create_group(file.handle, "g", &found));
    EXPECT_EQ(TDMS_GROUP_HANDLE, tdms_find_group(file.handle, "x", &found));
    EXPECT_EQ(TDMS_CHANNEL_REPEATED, tdms_create_channel(group, "c", &found));
    EXPECT_EQ(TDMS_CHANNEL_HANDLE, tdms_find_channel(group, "x", &found));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_create_group(file.handle, "a/b", &found));
    EXPECT_EQ(TDMS_ARGUMENT, tdms_create_channel(group, "/", &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_EQ(0, tdms_read_int32(channel, 1, 0, nullptr));
    expect_each(TDMS_RANGE,
                {tdms_read_int32(channel, 2, 0, nullptr), tdms_read_int32(channel, 1, most, &value),
                 tdms_read_int32(channel, most, 2, &value)});
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_read_uint32(channel, 0, 0, nullptr));
    EXPECT_EQ(TDMS_CHANNEL_DATATYPE, tdms_append_double(channel, 0, nullptr));
    EXPECT_EQ(TDMS_MEMORY, tdms_append_int32(channel, most, &value));
    const char* const texts[] = {"a", nullptr};
    void* const untyped = file.channel("g", "untyped");
    EXPECT_EQ(TDMS_ARGUMENT, tdms_append_string(untyped, 2, texts));
    expect_each(0, {tdms_read_string(untyped, 0, 0, nullptr, 0, &got),
                    tdms_read_nanoseconds(untyped, 0, 0, nullptr), tdms_save(file.handle)});
    EXPECT_EQ(std::pair(1ul, 0ul), found_and_lost(channel)) << "nothing was appended";

    // Names as a foreign file has them: without quotes, with a zero byte.
    const std::string zero("/'a\0b'", 6);
    const scratch_file foreign(
        segment({object("/ab", none), object(zero, none), object("/ab/cde", none)}));
    const tdms_file read(foreign, "r");
    EXPECT_EQ(0, tdms_find_group(read.handle, "", &group)) << "/ab";
    EXPECT_EQ(0, tdms_find_channel(group, "d", &found)) << "/ab/cde";
    EXPECT_EQ(0, tdms_get_group_name(groups_of(read.handle)[0], &got, &length));
    EXPECT_EQ(zero.substr(2, 3), std::string(got, length));
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
