// Properties on the three levels, the same checks for each.
#include "elements.h"
#include "support.h"

namespace {

class Properties : public ::testing::TestWithParam<std::size_t>, file_of_one_channel {
  protected:
    template <class Element>
    int create(const char* name, typename Element::value value)
    {
        return Element::properties[GetParam()].create(owner_, name, value);
    }
    template <class Element>
    int get(const char* name, typename Element::value* value)
    {
        return Element::properties[GetParam()].get(owner_, name, value);
    }

    const property_level& level_ = levels[GetParam()];
    void* owner_ = std::array{file.handle, group, channel}[GetParam()];
};
INSTANTIATE_TEST_SUITE_P(Levels, Properties, ::testing::Range<std::size_t>(0, 3));

TEST_P(Properties, CreateListGetDelete)
{
    EXPECT_EQ(0, level_.list(owner_, nullptr));
    for (const char* name : {"b", "a", "ab", ""}) EXPECT_EQ(0, create<element_int16>(name, -2));
    EXPECT_EQ(level_.repeated, create<element_string>("a", "other"));
    EXPECT_EQ(4, level_.count(owner_));
    const char* names[4];
    EXPECT_EQ(0, level_.list(owner_, names));
    EXPECT_EQ((std::vector<std::string>{"", "a", "ab", "b"}),
              std::vector<std::string>(std::begin(names), std::end(names)));
    EXPECT_EQ(2, level_.datatype(owner_, "a"));
    EXPECT_EQ(0, level_.remove(owner_, ""));
    timestamp_fields time = {1, 1, 1, 1, 1, 1, 1};
    expect_each(level_.absent, {level_.list(owner_, nullptr), level_.remove(owner_, ""),
                                level_.datatype(owner_, ""), get<element_timestamp>("", &time)});
    EXPECT_TRUE(is_same(timestamp_fields{}, time)) << "written although there is none";
}

TEST_P(Properties, StringsAndOtherTypes)
{
    expect_each(0, {create<element_string>("s", "abc"), create<element_float>("f", 1.0F),
                    create<element_int16>("n", 0x4141)});
    char buffer[] = "#########";
    expect_each(
        TDMS_PROPERTY_BUFFER,
        {level_.get_string(owner_, "s", buffer, 7), level_.get_string(owner_, "none", buffer, 0),
         level_.get_string(owner_, "s", nullptr, 100), get<element_uint32>("f", nullptr)});
    EXPECT_EQ(level_.absent, level_.get_string(owner_, "none", buffer, 1));
    EXPECT_STREQ("#########", buffer);
    EXPECT_EQ(0, level_.get_string(owner_, "s", buffer, 8));
    EXPECT_EQ(std::string("abc\0#####", 9), std::string(buffer, 9));
    // A number's bytes taken for a length: no more is copied than is there.
    EXPECT_EQ(0, level_.get_string(owner_, "f", buffer, 5));
    EXPECT_STREQ("", buffer);
    *buffer = '#';
    EXPECT_EQ(0, level_.get_string(owner_, "n", buffer, 3));
    EXPECT_EQ('\0', *buffer);
    // The type asked for decodes the bytes that are there; too few are zero.
    std::uint32_t bits = 0;
    std::uint64_t wide = 9;
    expect_each(0, {get<element_uint32>("f", &bits), get<element_uint64>("f", &wide)});
    EXPECT_EQ(std::pair(0x3F800000u, 0ul), std::pair(bits, wide));
}

TEST_P(Properties, NullHandlesAndNames)
{
    EXPECT_EQ(null_message, thrown_message([&] { level_.datatype(owner_, nullptr); }));
    EXPECT_EQ(null_message, thrown_message([&] { level_.remove(owner_, nullptr); }));
    EXPECT_EQ(null_message, thrown_message([&] { create<element_int16>(nullptr, 1); }));
    EXPECT_EQ(null_message, thrown_message([&] { create<element_string>("a", nullptr); }));
    EXPECT_EQ(0, level_.count(owner_));
    owner_ = nullptr;
    std::uint32_t value = 7;
    expect_each(level_.invalid_handle,
                {level_.count(nullptr), level_.list(nullptr, nullptr),
                 level_.datatype(nullptr, nullptr), level_.remove(nullptr, nullptr),
                 level_.get_string(nullptr, nullptr, nullptr, 8), create<element_int16>(nullptr, 1),
                 create<element_string>(nullptr, nullptr), get<element_uint32>("f", &value)});
    EXPECT_EQ(7u, value) << "untouched";
}

TEST_P(Properties, SetRejectsWhatDoesNotFitItsType)
{
    tdms_value value{};
    const auto set = [&](std::int32_t type, auto fill) {
        value = {};
        value.type = type;
        fill(value.value);
        return tdms_set_property(owner_, "kept", 4, &value);
    };
    const auto integer = [](std::int64_t n) { return [n](auto& v) { v.integer = n; }; };
    const auto natural = [](std::uint64_t n) { return [n](auto& v) { v.natural = n; }; };
    const auto number = [](double n) { return [n](auto& v) { v.number = n; }; };
    const auto string = [](const char* begin, std::uint64_t length) {
        return [=](auto& v) { v.string = {begin, length}; };
    };
    EXPECT_EQ(0, set(TDMS_TYPE_INT16, integer(7)));
    expect_each(TDMS_ARGUMENT,
                {set(TDMS_TYPE_INT8, integer(128)), set(TDMS_TYPE_INT8, integer(-129)),
                 set(TDMS_TYPE_INT32, integer(1LL << 31)), set(TDMS_TYPE_UINT8, natural(256)),
                 set(TDMS_TYPE_UINT32, natural(1ULL << 32))});
    expect_each(TDMS_ARGUMENT,
                {set(TDMS_TYPE_BOOL, integer(2)), set(TDMS_TYPE_FLOAT, number(3.5e38)),
                 set(TDMS_TYPE_STRING, string(nullptr, 1)),
                 set(TDMS_TYPE_STRING, string("", (1ULL << 32) - 4))});
    for (const int type : {0, 0x0B, -1}) EXPECT_EQ(TDMS_ARGUMENT, set(type, integer(0)));
    expect_each(TDMS_ARGUMENT, {tdms_set_property(owner_, nullptr, 0, &value),
                                tdms_set_property(owner_, "a", 1, nullptr),
                                tdms_set_property(owner_, "", 1ULL << 32, &value),
                                tdms_set_property(nullptr, "a", 1, &value)});
    expect_each(TDMS_ARGUMENT, {tdms_get_property(owner_, "", ~0ull, &value),
                                tdms_get_property(owner_, nullptr, 0, &value),
                                tdms_get_property(owner_, "kept", 4, nullptr),
                                tdms_next_property(owner_, nullptr, nullptr, &value)});
    EXPECT_EQ(1, level_.count(owner_));
    EXPECT_EQ(0, tdms_get_property(owner_, "kept and more", 4, &value));
    EXPECT_TRUE(value.type == TDMS_TYPE_INT16 && value.value.integer == 7);
    EXPECT_EQ(level_.absent, tdms_get_property(owner_, "kept", 5, &value)) << "a NUL counts";
}

}  // namespace
