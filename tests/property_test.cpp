// Properties on the three levels: one table of a level's functions, the same checks for each.
#include "support.h"

namespace {

struct level {
    const char* name;
    int invalid_handle;
    int absent;
    int repeated;
    int (*count)(void*);
    int (*list)(void*, const char**);
    int (*datatype)(void*, const char*);
    int (*remove)(void*, const char*);
    int (*create_int16)(void*, const char*, std::int16_t);
    int (*get_int16)(void*, const char*, std::int16_t*);
    int (*get_uint64)(void*, const char*, std::uint64_t*);
    int (*create_float)(void*, const char*, float);
    int (*get_uint32)(void*, const char*, std::uint32_t*);
    int (*create_string)(void*, const char*, const char*);
    int (*get_string)(void*, const char*, char*, std::uint64_t);
    int (*get_timestamp)(void*, const char*, timestamp_fields*);
};

void PrintTo(const level& l, std::ostream* out)
{
    *out << l.name;
}

#define LEVEL(name, handle, absent, repeated)                                              \
    level                                                                                  \
    {                                                                                      \
#name, handle, absent, repeated, get_num_##name##_property, get_##name##_property, \
            get_##name##_property_datatype, delete_##name##_property,                      \
            create_##name##_property_int16, get_##name##_property_int16,                   \
            get_##name##_property_uint64, create_##name##_property_float,                  \
            get_##name##_property_uint32, create_##name##_property_string,                 \
            get_##name##_property_string, get_##name##_property_timestamp                  \
    }

class Properties : public ::testing::TestWithParam<level> {
  protected:
    void* owner()
    {
        if (GetParam().invalid_handle == TDMS_FILE_HANDLE) return file_.handle;
        if (GetParam().invalid_handle == TDMS_GROUP_HANDLE) return group_;
        return channel_;
    }

    scratch_file scratch_;
    open_tdms file_{scratch_, "w"};
    void* group_ = file_.add_group("g");
    void* channel_ = add_channel(group_, "c");
};

TEST_P(Properties, CreateListGetDelete)
{
    const level& l = GetParam();
    EXPECT_EQ(0, l.list(owner(), nullptr));
    for (const char* name : {"b", "a", "ab", ""}) EXPECT_EQ(0, l.create_int16(owner(), name, -2));
    EXPECT_EQ(l.repeated, l.create_string(owner(), "a", "other"));
    EXPECT_EQ(4, l.count(owner()));
    const char* names[4];
    EXPECT_EQ(l.absent, l.list(owner(), nullptr));
    EXPECT_EQ(0, l.list(owner(), names));
    EXPECT_EQ(std::string(";a;ab;b"),
              std::string(names[0]) + ";" + names[1] + ";" + names[2] + ";" + names[3]);
    EXPECT_EQ(2, l.datatype(owner(), "a"));
    EXPECT_EQ(0, l.remove(owner(), ""));
    EXPECT_EQ(l.absent, l.remove(owner(), ""));
    EXPECT_EQ(l.absent, l.datatype(owner(), ""));
    EXPECT_EQ(3, l.count(owner()));
}

TEST_P(Properties, ValuesOfOtherTypesAndAbsentOnes)
{
    const level& l = GetParam();
    EXPECT_EQ(0, l.create_float(owner(), "f", 1.0F));
    std::uint32_t bits = 0;
    EXPECT_EQ(0, l.get_uint32(owner(), "f", &bits));
    EXPECT_EQ(0x3F800000u, bits) << "the type asked for decodes the bytes that are there";
    std::uint64_t wide = 9;
    EXPECT_EQ(0, l.get_uint64(owner(), "f", &wide));
    EXPECT_EQ(0u, wide) << "too few bytes are zero";
    std::int16_t small = 9;
    EXPECT_EQ(l.absent, l.get_int16(owner(), "none", &small));
    EXPECT_EQ(0, small) << "written although there is none";
    timestamp_fields time = {1, 1, 1, 1, 1, 1, 1};
    EXPECT_EQ(l.absent, l.get_timestamp(owner(), "none", &time));
    EXPECT_EQ(0, time.year + time.month + time.day + time.hour + time.microsecond);
    EXPECT_EQ(TDMS_PROPERTY_BUFFER, l.get_int16(owner(), "f", nullptr));
    small = 9;
    EXPECT_EQ(l.invalid_handle, l.get_int16(nullptr, "f", &small));
    EXPECT_EQ(9, small);
}

TEST_P(Properties, TextsAndTheirBuffers)
{
    const level& l = GetParam();
    EXPECT_EQ(0, l.create_string(owner(), "s", "abc"));
    EXPECT_EQ(32, l.datatype(owner(), "s"));
    char buffer[] = "#########";
    EXPECT_EQ(TDMS_PROPERTY_BUFFER, l.get_string(owner(), "s", buffer, 7));
    EXPECT_EQ(TDMS_PROPERTY_BUFFER, l.get_string(owner(), "none", buffer, 0));
    EXPECT_EQ(TDMS_PROPERTY_BUFFER, l.get_string(owner(), "s", nullptr, 100));
    EXPECT_EQ(l.absent, l.get_string(owner(), "none", buffer, 1));
    EXPECT_STREQ("#########", buffer);
    EXPECT_EQ(0, l.get_string(owner(), "s", buffer, 8));
    EXPECT_EQ(std::string("abc\0#####", 9), std::string(buffer, 9));
    // A number's bytes taken for a length: no more is copied than is there.
    EXPECT_EQ(0, l.create_float(owner(), "f", 1.0F));
    EXPECT_EQ(0, l.get_string(owner(), "f", buffer, 5));
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(0, l.create_int16(owner(), "n", 0x4141));
    EXPECT_EQ(0, l.get_string(owner(), "n", buffer, 3));
    EXPECT_STREQ("", buffer);
}

TEST_P(Properties, NullHandlesAndNames)
{
    const level& l = GetParam();
    const char* const null_text = "basic_string::_M_construct null not valid";
    const char* names[1];
    char buffer[8];
    EXPECT_EQ(l.invalid_handle, l.count(nullptr));
    EXPECT_EQ(l.invalid_handle, l.list(nullptr, names));
    EXPECT_EQ(l.invalid_handle, l.datatype(nullptr, "a"));
    EXPECT_EQ(l.invalid_handle, l.remove(nullptr, "a"));
    EXPECT_EQ(l.invalid_handle, l.create_int16(nullptr, nullptr, 1));
    EXPECT_EQ(l.invalid_handle, l.create_string(nullptr, "a", "b"));
    EXPECT_EQ(l.invalid_handle, l.get_string(nullptr, "a", buffer, 8));
    EXPECT_EQ(null_text, thrown_text([&] { l.datatype(owner(), nullptr); }));
    EXPECT_EQ(null_text, thrown_text([&] { l.remove(owner(), nullptr); }));
    EXPECT_EQ(null_text, thrown_text([&] { l.create_int16(owner(), nullptr, 1); }));
    EXPECT_EQ(null_text, thrown_text([&] { l.create_string(owner(), "a", nullptr); }));
    EXPECT_EQ(null_text, thrown_text([&] { l.get_string(owner(), nullptr, buffer, 8); }));
    EXPECT_EQ(0, l.count(owner()));
}

INSTANTIATE_TEST_SUITE_P(Levels, Properties,
                         ::testing::Values(LEVEL(file, TDMS_FILE_HANDLE, TDMS_FILE_PROPERTY_NAME,
                                                 TDMS_FILE_PROPERTY_REPEATED),
                                           LEVEL(group, TDMS_GROUP_HANDLE, TDMS_GROUP_PROPERTY_NAME,
                                                 TDMS_GROUP_PROPERTY_REPEATED),
                                           LEVEL(channel, TDMS_CHANNEL_HANDLE,
                                                 TDMS_CHANNEL_PROPERTY_NAME,
                                                 TDMS_CHANNEL_PROPERTY_REPEATED)),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
