// Files that end too early, before they are opened or after that, and those that grow.
#include "anything.h"
#include "hostile_files.h"
#include "sessions.h"
#include "support.h"

namespace {

TEST(TruncatedFiles, AtEveryByte)
{
    const scratch_file scratch;
    write_everything(scratch.path(), [](auto function) { EXPECT_EQ(0, function()); });
    const std::string complete = scratch.bytes();
    const std::vector<std::size_t> ends = segment_offsets(complete);
    for (std::size_t cut = 0; cut <= complete.size(); ++cut) {
        SCOPED_TRACE(cut);
        scratch.fill(complete.substr(0, cut));
        const std::size_t intact = *std::prev(std::upper_bound(ends.begin(), ends.end(), cut));
        const int expected = intact == cut ? 0 : TDMS_FILE_READ;
        expect_each(expected, {open_tdms(scratch, "r").status, tdms_file(scratch, "r").status});
        const tdms_file partial(scratch);
        EXPECT_EQ(std::pair(0, cut - intact), std::pair(partial.status, partial.rest));
        if (intact == cut) read_anything(partial.handle);
    }
}

// Reads channel c, a file's only one, after the file has lost its end: nothing is read, and the
// caller's array stays as it was.
template <class T, class... Read>
void expect_rejected(const std::string& complete, std::size_t size, Read... read)
{
    for (const std::size_t left : {complete.size() - 1, complete.size() - 9999, 60ul, 20ul, 0ul}) {
        const scratch_file scratch(complete);
        const open_tdms file(scratch, "r");
        void* const channel = file.channel(0, 0);
        const auto expect_untouched = [=](auto call) {
            const std::string before(size * sizeof(T), '#');
            std::string array = before;
            EXPECT_EQ(unreadable, call(channel, reinterpret_cast<T*>(array.data()))) << left;
            EXPECT_TRUE(before == array) << left;
        };
        found_and_lost(channel);  // the second interface locates values only once
        std::filesystem::resize_file(scratch.path(), left);
        (expect_untouched(read), ...);
    }
}

TEST(TruncatedFiles, WhileTheyAreOpen)
{
    constexpr std::uint64_t n = 20000;
    const std::string raw(16 * n, 'x');
    const auto of_type = [&](std::uint32_t type, std::size_t value_size) {
        return segment({object(path_c, fixed_index(type, n))}, raw.substr(0, n * value_size));
    };
    const auto range = [](auto read) {
        return [read](void* c, auto* values) { return read(c, 0, n, values); };
    };
    expect_rejected<std::int32_t>(of_type(3, 4), n, range(tdms_read_int32), get_channel_data_int32);
    expect_rejected<double>(of_type(3, 4), n, range(tdms_read_double));
    expect_rejected<bool>(of_type(33, 1), n, range(tdms_read_bool), get_channel_data_bool);
    expect_rejected<std::int64_t>(of_type(68, 16), n, range(tdms_read_nanoseconds));
    expect_rejected<timestamp_fields>(of_type(68, 16), n, range(tdms_read_timestamp),
                                      get_channel_data_timestamp);
    std::string strings;
    for (std::uint32_t i = 1; i <= n; ++i) strings += u32(i);
    const std::string of_strings =
        segment({object(path_c, string_index(n, 5 * n))}, strings + raw.substr(0, n));
    std::vector<const char*> pointers(n + 1);
    expect_rejected<char>(of_strings, 2 * n, [&pointers](void* c, char* buffer) {
        return ::tdms_read_string(c, 0, n, buffer, 2 * n, pointers.data());
    });
    expect_rejected<const char*>(of_strings, n, get_channel_data_string);
}

TEST(GrowingFiles, AreKnownAfterARefresh)
{
    const auto c = [](const std::string& index, std::uint32_t type, const std::string& p,
                      const std::string& raw) {
        return segment({object(path_c, index, property_p(type, p))}, raw);
    };
    const std::string one = c(fixed_index(3, 1), 3, u32(5), u32(7));
    const std::string same = c(as_before, 3, u32(6), u32(8));
    const std::string two = c(fixed_index(3, 2), 32, prefixed("p"), u32(9) + u32(10));
    const std::string two_more = segment({object(path_c, as_before)}, u32(11) + u32(12));
    const scratch_file scratch(one + one.substr(0, one.size() - 1));
    const tdms_file growing(scratch);
    ASSERT_EQ(std::pair(0, one.size() - 1), std::pair(growing.status, growing.rest));
    void* const channel = growing.channel("g", "c");
    EXPECT_EQ(1u, found_and_lost(channel).first);
    scratch.fill(one + same + two + two_more + segment({object("/'g'/xyz'", none)}));
    std::uint64_t rest = 1;
    EXPECT_EQ(0, tdms_refresh(growing.handle, &rest));
    EXPECT_EQ(0u, rest);
    EXPECT_EQ(6u, found_and_lost(channel).first);
    EXPECT_EQ(6u, value_count(channel)) << "an index as before has the count of the one before";
    std::int32_t values[6] = {};
    expect_each(0,
                {tdms_read_int32(channel, 0, 6, values), get_channel_data_int32(channel, values)});
    EXPECT_EQ((std::array{7, 8, 9, 10, 11, 12}), std::to_array(values));
    EXPECT_EQ(32, get_channel_property_datatype(channel, "p"));
    EXPECT_EQ(0u, found_and_lost(growing.channel("g", "yz")).first) << "found by its name";
    scratch.fill(one);
    EXPECT_EQ(TDMS_FILE_READ, tdms_refresh(growing.handle, &rest)) << "truncated";
    EXPECT_EQ(0, tdms_read_int32(channel, 0, 1, values)) << "the first value is still there";
}

TEST(GrowingFiles, AreNotTheSameIfTheirLastSegmentIsNot)
{
    const std::string one = segment({one_value}, u32(7));
    const std::string two = segment({int32s(path_c, 2)}, u32(7) + u32(8));
    for (const std::string& anew : {one + two + one, two + two + two}) {
        const scratch_file scratch(one + one);
        const tdms_file growing(scratch);
        scratch.fill(anew);
        EXPECT_EQ(TDMS_FILE_READ, tdms_refresh(growing.handle, nullptr));
        scratch.fill(one + one);
        EXPECT_EQ(TDMS_FILE_READ, tdms_refresh(growing.handle, nullptr)) << "for good";
    }
}

TEST(TruncatedFiles, OpenAsFarAsTheyAreIntact)
{
    const std::string complete = segment({one_value}, u32(7));
    const std::string group = segment({group_g});
    const std::string damaged = segment({object("/'h'", none), object(path_c, u32(24))});
    const std::tuple<int, std::uint64_t, std::string> rows[] = {
        {0, 0, ""},
        {0, 3, complete.substr(0, 3)},
        {0, 27, complete.substr(0, 27)},
        {0, 40, complete.substr(0, 40)},
        {TDMS_FILE_TAG, 0, "TDX"},
        {TDMS_FILE_TOC, 0, "TDSm\x0F"},
        {TDMS_FILE_READ, 0, lead_in(0, 0)},
        {TDMS_FILE_READ, 0, lead_in(4, ~0ull) + u32(0)},
        {TDMS_FILE_READ, 0, lead_in(100, ~49ull) + u32(0)},
        {TDMS_INDEX, 0, damaged},
        {0, damaged.size(), group + damaged},
        {TDMS_DATATYPE, 0, segment({object("/", none, property_p(0x4F))})},
    };
    for (const auto& [status, after, bytes] : rows) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const scratch_file each(bytes);
        const tdms_file partial(each);
        EXPECT_EQ(std::pair(status, after), std::pair(partial.status, partial.rest));
        EXPECT_EQ(bytes.starts_with(group), status == 0 && get_num_group(partial.handle) == 1);
    }
}

}  // namespace
