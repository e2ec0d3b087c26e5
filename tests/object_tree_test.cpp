// Groups and channels in memory: their order, replacement, and handles that are rejected.
#include "core/object_model.h"
#include "support.h"

namespace {

using Tree = FileOfOneChannel;

TEST_F(Tree, ListsInTheOrderOfPaths)
{
    for (const char* name : {"b", "ab", "a", "", "B", "ab!", "abc"}) file.add_group(name);
    for (const char* name : {"b", "a", "A", "it's/odd"}) add_channel(group, name);
    std::string names;
    for (void* const g : groups_of(file.handle)) names += name_of(get_group_name, g) + ";";
    for (void* const c : channels_of(group)) names += name_of(get_channel_name, c) + ";";
    EXPECT_EQ(";B;a;ab!;ab;abc;b;g;A;a;b;c;it's/odd;", names);
}

TEST_F(Tree, RepeatedNames)
{
    void* other = &other;
    EXPECT_EQ(TDMS_GROUP_REPEATED, create_group(file.handle, "g", &other));
    EXPECT_EQ(&other, other);

    // An ordinary repeated name replaces the channel.
    EXPECT_EQ(0, create_channel_property_int8(channel, "p", 1));
    void* const second = add_channel(group, "c");
    EXPECT_EQ(std::vector{second}, channels_of(group));
    EXPECT_EQ(0, get_num_channel_property(second));

    // Only a name that is the new channel's whole path is in the way.
    void* const in_the_way = add_channel(group, "/'g'/'y'");
    EXPECT_EQ(TDMS_CHANNEL_REPEATED, create_channel(group, "y", &other));
    expect_each(
        0, {delete_channel(in_the_way), create_channel(group, "y", &other), delete_group(group),
            get_num_group(file.handle), get_num_channel(file.add_group("g"))});

    // A foreign file may have channel paths without quotes; names are compared all the same.
    scratch.fill(segment({object("/'g'", none), object("/'g'/x/'g'/'y''", none)}));
    const open_tdms foreign(scratch, "r");
    ASSERT_EQ("/'g'/'y'", name_of(get_channel_name, foreign.channel(0, 0)));
    EXPECT_EQ(TDMS_CHANNEL_REPEATED, create_channel(foreign.group(0), "y", &other));
}

// Handles are validated by their paths: what its file does not list is rejected.
TEST_F(Tree, ObjectsThatAreNotInTheirFile)
{
    auto& lost_group = *static_cast<tdms_impl::group*>(group);
    auto& lost_channel = *static_cast<tdms_impl::channel*>(channel);
    lost_channel.path = "/'g'/'lost'";
    char name[8];
    std::int8_t value = 0;
    void* out = nullptr;
    const auto expect_rejected = [&](int expected, void* gone) {
        expect_each(expected,
                    {get_channel_name(gone, name), delete_channel(gone), get_channel_datatype(gone),
                     get_num_channel_property(gone), create_channel_property_int8(gone, "p", 1),
                     set_channel_data_int8(gone, 1, &value)});
    };
    expect_rejected(TDMS_CHANNEL_HANDLE, &lost_channel);
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int8(&lost_channel, &value));
    lost_group.path = "/'lost'";
    expect_rejected(TDMS_GROUP_HANDLE, &lost_channel);
    expect_each(
        TDMS_GROUP_HANDLE,
        {get_group_name(&lost_group, name), delete_group(&lost_group), get_num_channel(&lost_group),
         get_num_group_property(&lost_group), create_channel(&lost_group, "c", &out)});
    lost_group.file = nullptr;
    expect_rejected(TDMS_CHANNEL_HANDLE, &lost_channel);
}

TEST_F(Tree, NullHandlesNamesAndOutputs)
{
    void* out = nullptr;
    expect_each(TDMS_FILE_HANDLE,
                {save_file(nullptr), get_num_group(nullptr), get_group(nullptr, &out),
                 create_group(nullptr, nullptr, &out), get_group(file.handle, nullptr)});
    expect_each(TDMS_GROUP_HANDLE,
                {delete_group(nullptr), get_num_channel(nullptr), get_channel(nullptr, &out),
                 create_channel(nullptr, nullptr, &out), create_group(file.handle, "h", nullptr)});
    expect_each(TDMS_CHANNEL_HANDLE,
                {delete_channel(nullptr), get_channel_datatype(nullptr),
                 get_num_channel_data(nullptr, nullptr), set_channel_data_int8(nullptr, 0, nullptr),
                 get_channel_data_string(nullptr, nullptr), create_channel(group, "d", nullptr)});
    EXPECT_EQ(TDMS_CHANNEL_DATA_COUNT, get_num_channel_data(channel, nullptr));
    EXPECT_EQ(null_message, thrown_message([&] { create_group(file.handle, nullptr, &out); }));
    EXPECT_EQ(null_message, thrown_message([&] { create_channel(group, nullptr, &out); }));
    EXPECT_EQ(2, get_num_group(file.handle) + get_num_channel(group)) << "one of each";
}

}  // namespace
