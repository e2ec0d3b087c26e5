// Every function of the second interface with null arguments, handles of each kind, in each mode;
// what is rejected leaves everything as it was.
#include "elements.h"
#include "support.h"

namespace {

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

// A null in the place of each pointer, from one argument on.
template <std::size_t Null = 0, class... T, std::size_t... I>
void reject_nulls(int (*function)(void*, T...), void* handle, std::index_sequence<I...> all)
{
    if constexpr (Null < sizeof...(T)) {
        const bool pointers[] = {std::is_pointer_v<T>...};
        const int status =
            pointers[Null] ? function(handle, (I == Null ? T{} : allowed<T>())...) : TDMS_ARGUMENT;
        EXPECT_EQ(TDMS_ARGUMENT, status) << Null;
        reject_nulls<Null + 1>(function, handle, all);
    }
}

// The handles of one file, by kind, and what may be done with it.
struct open_handles {
    std::array<void*, 3> kinds;
    bool writable;

    template <class... T>
    void check(std::size_t kind, int (*function)(void*, T...)) const
    {
        for (void* const other : {kinds[(kind + 1) % 3], kinds[(kind + 2) % 3], (void*)nullptr}) {
            EXPECT_EQ(TDMS_ARGUMENT, function(other, allowed<T>()...));
        }
        if (writable) reject_nulls(function, kinds[kind], std::index_sequence_for<T...>());
    }

    // A function that changes the file, which not every handle allows.
    template <class... T>
    void check_change(std::size_t kind, int (*function)(void*, T...)) const
    {
        check(kind, function);
        if (writable) return;
        EXPECT_EQ(TDMS_FILE_HANDLE, function(kinds[kind], allowed<T>()...));
    }

    void check_all() const
    {
#define CHECK_PROPERTIES(kind, level)                     \
    check(kind, tdms_get_##level##_property_string);      \
    check(kind, tdms_get_##level##_property_nanoseconds); \
    check_change(kind, tdms_create_##level##_property_nanoseconds);
        CHECK_PROPERTIES(0, file)
        CHECK_PROPERTIES(1, group)
        CHECK_PROPERTIES(2, channel)
        for (const auto function : {tdms_save, tdms_sync}) check_change(0, function);
        check_change(0, tdms_create_group);
        check_change(1, tdms_create_channel);
        check_change(2, tdms_append_nanoseconds);
        check(0, tdms_find_group);
        check(1, tdms_find_channel);
        check(1, tdms_get_group_name);
        check(2, tdms_get_channel_name);
        check(2, tdms_get_string_size);
        check(2, tdms_read_nanoseconds);
        check<std::uint64_t, std::uint64_t, char*, std::uint64_t, const char**>(2,
                                                                                tdms_read_string);
        for_each_element([this]<class Element>(Element) {
            check_change(2, +Element::append);
            if constexpr (Element::code != TDMS_TYPE_STRING) check(2, Element::read);
        });
    }
};

TEST(Arguments, NullAndHandlesOfEachKindInEachMode)
{
    const scratch_file scratch;
    tdms_file created(scratch, "w");
    created.channel("g", "c");
    EXPECT_EQ(0, create_file_property_string(created.handle, "s", "longer than a time is"));
    created.save_and_close();
    const std::string before = scratch.bytes();
    for (const std::string mode : {"r", "a", "partial", "first r", "first none"}) {
        SCOPED_TRACE(mode);
        file_handle file;
        const auto open = mode.starts_with("first ") ? open_file : tdms_open;
        const char* const own_mode = &mode[mode.rfind(' ') + 1];
        ASSERT_EQ(0, mode == "partial" ? tdms_open_partial(scratch.path(), &file.handle, nullptr)
                                       : open(scratch.path(), own_mode, &file.handle));
        open_handles handles{{file.handle}, mode == "a"};
        auto& [opened, group, channel] = handles.kinds;
        const bool empty = mode == "first none";
        EXPECT_EQ(0, (empty ? create_group : tdms_find_group)(opened, "g", &group));
        EXPECT_EQ(0, (empty ? create_channel : tdms_find_channel)(group, "c", &channel));
        handles.check_all();
        EXPECT_EQ(TDMS_ARGUMENT, tdms_close(&group)) << "no file";
        void* copy = opened;
        EXPECT_EQ(0, tdms_close(&file.handle));
        EXPECT_EQ(nullptr, file.handle);
        expect_each(TDMS_ARGUMENT,
                    {tdms_close(&file.handle), tdms_close(&copy), tdms_close(nullptr)});
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
    void* const untyped = file.channel("g", "untyped");
    void* const other = file.channel("g", "other");
    void* found = nullptr;
    const char *got = nullptr, *const strings[] = {"a", nullptr};
    std::uint64_t length = 0;
    std::int64_t time = 0;
    std::int32_t value = 7;
    constexpr std::uint64_t most = ~std::uint64_t{0};
    expect_each(0, {tdms_append_int32(channel, 1, &value), tdms_save(file.handle),
                    create_file_property_string(file.handle, "s", "longer than a time is"),
                    tdms_get_file_property_string(file.handle, "s", &got, &length),
                    tdms_read_int32(channel, 1, 0, nullptr)});
    EXPECT_EQ(std::string("longer than a time is\0", 22), std::string(got, length + 1));
    expect_each(TDMS_RANGE,
                {tdms_read_int32(channel, 2, 0, nullptr), tdms_read_int32(channel, 1, most, &value),
                 tdms_read_int32(channel, most, 2, &value)});
    expect_each(TDMS_CHANNEL_DATATYPE, {tdms_read_uint32(channel, 0, 0, nullptr),
                                        tdms_append_double(channel, 0, nullptr)});
    expect_each(TDMS_ARGUMENT, {tdms_create_group(file.handle, "a/b", &found),
                                tdms_create_channel(file.group("g"), "/", &found),
                                tdms_append_string(untyped, 2, strings)});
    EXPECT_EQ(TDMS_DATATYPE, tdms_get_file_property_nanoseconds(file.handle, "s", &time));
    EXPECT_EQ(TDMS_MEMORY, tdms_append_int32(channel, most, &value));
    EXPECT_EQ(0, tdms_append_int32(other, 1, &value));
    EXPECT_EQ(TDMS_MEMORY, tdms_append_int32(other, most, &value)) << "after what is staged";
    expect_each(0, {tdms_read_string(untyped, 0, 0, nullptr, 0, &got),
                    tdms_read_nanoseconds(untyped, 0, 0, nullptr), tdms_save(file.handle)});
    EXPECT_EQ(std::pair(1ul, 0ul), found_and_lost(channel)) << "nothing was appended";
}

}  // namespace
