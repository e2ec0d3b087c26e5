// What the first interface must keep on doing, and the second one beside it, on the same files.
#include "elements.h"
#include "support.h"

namespace {

constexpr const char* letters[] = {"a", "b", "c", "d", "e", "f", "g"};

void write_letters(const scratch_file& scratch)
{
    tdms_file file(scratch, "w");
    for (std::int32_t i = 0; i != 7; ++i) {
        const std::int32_t values[] = {i, 10 * i};
        EXPECT_EQ(0, tdms_append_int32(file.channel("a", letters[i]), 2, values));
    }
    file.save_and_close();
}

// How many of the channels give back what they were given, and nothing else.
std::size_t right_by_first_functions(const scratch_file& scratch)
{
    const open_tdms file(scratch, "r");
    std::size_t right = 0;
    for (void* const group : groups_of(file.handle)) {
        for (std::int32_t i = 0; void* const channel : channels_of(group)) {
            std::vector<std::int32_t> values(value_count(channel), -1);
            thrown_text([&] { get_channel_data_int32(channel, values.data()); });
            right += values[0] == i && values[1] == 10 * i;
            ++i;
        }
    }
    return right;
}

// Two values for one of seven channels: the others state counts without values. With a count of its
// own, the channel's values are found; with that of the others, nobody can know whose they are.
TEST(Traps, AppendingToSomeChannels)
{
    for (const std::uint64_t added : {1ul, 2ul}) {
        const scratch_file scratch;
        write_letters(scratch);
        EXPECT_EQ(7u, right_by_first_functions(scratch));
        const std::string intact = scratch.bytes();
        const std::int32_t values[] = {70, 71};
        open_tdms old(scratch, "a");
        EXPECT_EQ(0, set_channel_data_int32(old.channel(0, 3), added, values));
        old.save_and_close();
        EXPECT_GT(7u, right_by_first_functions(scratch));
        const tdms_file again(scratch, "r");
        for (const char* const letter : letters) {
            const std::uint64_t own = *letter == 'd' ? added : 2;
            const bool found = *letter == 'd' && added == 1;
            EXPECT_EQ(std::pair(found ? 2 + added : 2, found ? 0 : own),
                      found_and_lost(again.channel("a", letter)));
        }

        scratch.fill(intact);
        tdms_file appended(scratch, "a");
        EXPECT_EQ(0, tdms_append_int32(appended.channel("a", "d"), added, values));
        appended.save_and_close();
        EXPECT_EQ(7u, right_by_first_functions(scratch));
        std::int32_t last = 0;
        EXPECT_EQ(0,
                  tdms_read_int32(tdms_file(scratch, "r").channel("a", "d"), 1 + added, 1, &last));
        EXPECT_EQ(values[added - 1], last);
    }
}

TEST(Traps, Strings)
{
    const std::string block = u32(1) + u32(3) + u32(3) + std::string("x\0y", 3);
    const scratch_file scratch(segment({object("/'g'/'c'", string_index(3, block.size()))}, block));
    const tdms_file file(scratch, "r");
    void* const channel = file.channel("g", "c");
    char buffer[6] = "#####";
    const char* texts[4] = {};
    std::uint64_t size = 0;
    EXPECT_EQ(0, tdms_get_string_size(channel, 0, 3, &size));
    EXPECT_EQ(6u, size);
    EXPECT_EQ(TDMS_PROPERTY_BUFFER, ::tdms_read_string(channel, 0, 3, buffer, 5, texts));
    EXPECT_STREQ("#####", buffer);
    EXPECT_EQ(0, ::tdms_read_string(channel, 0, 3, buffer, 6, texts));
    EXPECT_EQ(std::string("x\0\0y\0\0", 6), std::string(buffer, 6));
    EXPECT_EQ(2, texts[2] - texts[1] - 1) << "a zero byte is one of them";
    EXPECT_EQ(buffer + 6, texts[3]);
    EXPECT_EQ(0, ::tdms_read_string(channel, 1, 0, nullptr, 0, texts));
}

TEST(Traps, SummerTime)
{
    set_time_zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const std::int64_t noon = 1721044800 * 1000000000LL;  // 2024-07-15T12:00:00Z, 14:00 in summer
    const timestamp_fields clock = {2024, 7, 15, 14, 0, 0, 0};
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    std::int64_t local = 0;
    timestamp_fields fields{};
    expect_each(0, {tdms_create_file_property_nanoseconds(file.handle, "utc", noon),
                    create_file_property_timestamp(file.handle, "local", clock),
                    tdms_get_file_property_nanoseconds(file.handle, "local", &local),
                    get_file_property_timestamp(file.handle, "utc", &fields)});
    EXPECT_EQ(3600 * 1000000000LL, local - noon) << "an hour off";
    EXPECT_TRUE(is_same(clock, fields)) << "as the clock showed it";
}

// A file without its last byte, a growing one, and those that hold nothing intact.
TEST(Traps, TruncatedFiles)
{
    const std::string whole = segment({int32s("/'g'/'c'", 1)}, u32(7));
    const scratch_file scratch(whole + whole.substr(0, whole.size() - 1));
    expect_each(TDMS_FILE_READ, {open_tdms(scratch, "r").status, tdms_file(scratch, "r").status});
    const tdms_file intact(scratch);
    ASSERT_EQ(std::pair(0, whole.size() - 1), std::pair(intact.status, intact.rest));
    void* const channel = intact.channel("g", "c");
    EXPECT_EQ(1u, found_and_lost(channel).first);
    scratch.fill(whole + whole + segment({object("/'g'/xyz'", none)}));
    std::uint64_t rest = 1;
    EXPECT_EQ(0, tdms_refresh(intact.handle, &rest));
    EXPECT_EQ(std::pair(2ul, 0ul), std::pair(found_and_lost(channel).first, rest));
    EXPECT_EQ(2u, value_count(channel)) << "known to the first functions, too";
    EXPECT_EQ(0u, found_and_lost(intact.channel("g", "yz")).first) << "found by its name";
    scratch.fill(whole);
    EXPECT_EQ(TDMS_FILE_READ, tdms_refresh(intact.handle, &rest));
    std::int32_t values[] = {5, 6};
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, tdms_read_int32(channel, 0, 2, values));
    EXPECT_EQ(5, values[0]) << "untouched";
    EXPECT_EQ(0, tdms_read_int32(channel, 0, 1, values));
    EXPECT_EQ(7, values[0]);
    scratch.fill(whole + whole + whole + whole);
    EXPECT_EQ(TDMS_FILE_READ, tdms_refresh(intact.handle, &rest)) << "recorded anew";

    const std::string group = segment({object("/'g'", none)});
    const std::string damaged = segment({object("/'h'", none), object("/'g'/'c'", u32(24))});
    const std::tuple<int, std::uint64_t, std::string> rows[] = {
        {0, 0, ""},
        {0, 3, whole.substr(0, 3)},
        {0, 27, whole.substr(0, 27)},
        {0, 40, whole.substr(0, 40)},
        {TDMS_FILE_TAG, 0, "TDX"},
        {TDMS_FILE_TOC, 0, "TDSm\x0F"},
        {TDMS_FILE_READ, 0, lead_in(0, 0)},
        {TDMS_FILE_READ, 0, lead_in(4, ~0ull) + u32(0)},
        {TDMS_INDEX, 0, damaged},
        {0, damaged.size(), group + damaged},
        {TDMS_DATATYPE, 0, segment({object("/'g'/'c'", fixed_index(0x4F, 1))})},
        {TDMS_DATATYPE, 0, segment({object("/", none, u32(1) + text("p") + u32(0x4F))})},
    };
    for (const auto& [status, after, bytes] : rows) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const scratch_file each(bytes);
        const tdms_file partial(each);
        EXPECT_EQ(std::pair(status, after), std::pair(partial.status, partial.rest));
        EXPECT_EQ(bytes.starts_with(group), status == 0 && get_num_group(partial.handle) == 1);
    }
}

// Times come back exactly from one end to the other.
TEST(Nanoseconds, EveryCountComesBack)
{
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    std::vector<std::int64_t> times{least, least + 1, -1000000001, -1, 0, 1, 999999999, most - 1};
    for (std::uint64_t random = most; times.size() != 10000;
         random = random * 6364136223846793005u + 1)
        times.push_back(static_cast<std::int64_t>(random));
    const scratch_file scratch;
    const tdms_file file(scratch, "w");
    void* const channel = file.channel("g", "c");
    std::vector<std::int64_t> read(times.size());
    expect_each(
        0, {tdms_append_nanoseconds(channel, times.size(), times.data()), tdms_save(file.handle),
            tdms_read_nanoseconds(channel, 0, read.size(), read.data())});
    EXPECT_EQ(times, read);

    // Half a nanosecond is rounded up; what no count reaches becomes the nearest end.
    const std::uint64_t epoch = 2082844800;
    const std::string raw = u64(9223372037) + u64(epoch) + u64(9223372036) + u64(epoch) +
                            u64(~0ull) + u64(epoch) + u64(0) + u64(1ull << 62) + u64(0) +
                            u64(3ull << 62);
    const scratch_file foreign(segment({object("/'g'/'c'", fixed_index(68, 5))}, raw));
    const tdms_file there(foreign, "r");
    read.resize(5);
    EXPECT_EQ(0, tdms_read_nanoseconds(there.channel("g", "c"), 0, 5, read.data()));
    EXPECT_EQ((std::vector<std::int64_t>{1, 0, 1000000000, most, least}), read);
}

}  // namespace
