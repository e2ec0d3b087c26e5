// Files, groups and channels in memory: statuses, order, replacement, the registry.
#include "open_files.h"
#include "support.h"

namespace {

TEST(Status, EveryCodeHasItsText)
{
    // From 1 and -5000 downwards to -5024, then 0; -5012 deliberately has none of its own.
    const char* const texts =
        "error code is error!error code is error!file path is error!file TAG is error!file TOC is "
        "error!file version is error!file handle is invalid!file reads falied!file property name "
        "is invalid!file_property name is repeated!file deletes failed!the index is error!group "
        "handle is invalid!error code is error!group property name is invalid!group property name "
        "is repeated!channel handle is invalid!channel reads failed!channel name is "
        "repeated!channel property name is invalid!channel property name is repeated!channel "
        "datatype is error!channel data reads failed!channel data num data reads failed!property "
        "buffer is insufficient!error code is error!no error!";
    std::string all = get_error_description(1);
    for (int code = -5000; code != -5025; --code) all += get_error_description(code);
    EXPECT_EQ(texts, all + get_error_description(0));
}

TEST(Registry, ClosingErasesTheFileOrElseTheLastOne)
{
    const scratch_file scratch;
    void* files[3] = {};
    for (void*& file : files) ASSERT_EQ(0, open_file(scratch.path(), "w", &file));
    ASSERT_EQ(3u, fileHandles.size());
    EXPECT_EQ(files[1], fileHandles[1].get());
    EXPECT_TRUE(std::unique_lock(mtx, std::try_to_lock).owns_lock()) << "left locked";
    EXPECT_EQ(0, save_file(files[1]));
    EXPECT_EQ(1u, fileHandles[1]->segment_count);

    // A file that is not in the registry takes the last one along; an empty one has none to erase.
    const auto kept = fileHandles;
    fileHandles.erase(fileHandles.begin());
    EXPECT_EQ(0, close_file(&files[0]));
    EXPECT_EQ(nullptr, files[0]);
    ASSERT_EQ(1u, fileHandles.size());
    EXPECT_EQ(files[1], fileHandles[0].get());
    expect_each(TDMS_FILE_HANDLE, {close_file(&files[0]), close_file(nullptr)});
    fileHandles.clear();
    EXPECT_EQ(0, close_file(&files[1]));
}

TEST(Files, StatusesOfOpeningAndDeleting)
{
    const scratch_file scratch;
    void* file = &file;
    const char* const path = scratch.path();
    EXPECT_EQ(TDMS_FILE_PATH, open_file("/nowhere/at/all", "w", &file));
    EXPECT_EQ(TDMS_FILE_PATH, open_file(path, "r", &file));
    expect_each(TDMS_FILE_READ, {open_file(path, "a", &file), open_file("/", "r", &file)});
    EXPECT_EQ(&file, file) << "untouched by failures";
    EXPECT_EQ(TDMS_FILE_HANDLE, open_file(path, "w", nullptr));
    EXPECT_EQ(TDMS_FILE_DELETE, delete_file(path));
    EXPECT_EQ(null_text, thrown_text([&] { open_file(nullptr, "w", &file); }));
    EXPECT_EQ(null_text, thrown_text([&] { open_file(path, nullptr, &file); }));
    EXPECT_EQ(null_text, thrown_text([] { delete_file(nullptr); }));
    expect_each(0, {open_file(path, "w", &file), delete_file(path), save_file(file)});
    EXPECT_FALSE(std::filesystem::exists(path)) << "a handle outlives its file's name";
    EXPECT_EQ(0, close_file(&file));

    // Any other mode gives a handle without a stream: all in memory works, nothing is lost.
    const open_tdms other(scratch, "rw");
    std::int32_t value = 4;
    void* const channel = add_channel(other.add_group("g"), "c");
    expect_each(0, {other.status, create_file_property_int8(other.handle, "p", 1),
                    set_channel_data_int32(channel, 1, &value)});
    EXPECT_EQ(TDMS_FILE_HANDLE, save_file(other.handle));
    EXPECT_EQ(1, get_num_file_property(other.handle));
    EXPECT_EQ(TDMS_CHANNEL_DATA_READ, get_channel_data_int32(channel, &value));
    EXPECT_TRUE(value == 4 && !std::filesystem::exists(path));
}

using Tree = NewFile;

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
    EXPECT_EQ(null_text, thrown_text([&] { create_group(file.handle, nullptr, &out); }));
    EXPECT_EQ(null_text, thrown_text([&] { create_channel(group, nullptr, &out); }));
    EXPECT_EQ(2, get_num_group(file.handle) + get_num_channel(group)) << "one of each";
}

}  // namespace
