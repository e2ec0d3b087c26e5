// Opening, closing and deleting files, and the registry of those that are open.
#include <sys/stat.h>

#include "hostile_files.h"
#include "open_files.h"
#include "support.h"

namespace {

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
    EXPECT_EQ(null_message, thrown_message([&] { open_file(nullptr, "w", &file); }));
    EXPECT_EQ(null_message, thrown_message([&] { open_file(path, nullptr, &file); }));
    EXPECT_EQ(null_message, thrown_message([] { delete_file(nullptr); }));
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

// No rejected opening leaves a descriptor, or changes a byte or the caller's handle.
TEST(Files, RejectedOpeningsChangeNothing)
{
    const scratch_file scratch, locked(""), none;
    const tdms_file holder(locked, "w");
    const tdms_file viewer(locked, "r");
    expect_each(0, {holder.status, viewer.status});  // reading does not mind the lock
    const auto open = descriptors();
    void* file = nullptr;
    const std::tuple<const char*, const char*, int> rows[] = {{locked.path(), "w", EWOULDBLOCK},
                                                              {locked.path(), "a", EWOULDBLOCK},
                                                              {none.path(), "r", ENOENT},
                                                              {none.path(), "a", ENOENT},
                                                              {"/", "r", EISDIR},
                                                              {"/", "w", EISDIR},
                                                              {"/nowhere/at/all", "w", ENOENT}};
    for (const auto& [path, mode, error] : rows) {
        errno = 0;
        EXPECT_EQ(TDMS_FILE_PATH, tdms_open(path, mode, &file)) << path << mode;
        EXPECT_EQ(error, errno) << path << mode;
    }
    EXPECT_FALSE(std::filesystem::exists(none.path()));
    for (const hostile_file& row : files_to_open()) {
        if (row.expected == 0) continue;
        SCOPED_TRACE(row.what);
        scratch.fill(row.bytes);
        const int expected = row.expected == failed_lookup ? TDMS_DATATYPE : row.expected;
        expect_each(expected,
                    {tdms_open(scratch.path(), "r", &file), tdms_open(scratch.path(), "a", &file)});
        EXPECT_EQ(nullptr, file);
        if (tdms_open_partial(scratch.path(), &file, nullptr) == TDMS_OK) tdms_close(&file);
        EXPECT_EQ(row.bytes, scratch.bytes());
    }
    // A pipe that nobody writes to is rejected without waiting.
    ASSERT_EQ(0, mkfifo(none.path(), 0600));
    for (const char* const mode : {"r", "w", "a"}) {
        EXPECT_EQ(TDMS_FILE_PATH, tdms_open(none.path(), mode, &file));
    }
    EXPECT_EQ(open, descriptors());
}

}  // namespace
