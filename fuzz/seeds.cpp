// seeds DIRECTORY: writes files to begin with, sound and not, for the fuzz target and for the tests
// of the tool. Those in the directory `odd` are sound, and their names and values unusual.
#include <filesystem>
#include <fstream>

#include "hostile_files.h"
#include "sessions.h"

namespace {

void fill(const std::filesystem::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// Doubles by their bits, and texts that need quotes in a table, in two columns that are shorter.
std::string odd_values()
{
    const std::string doubles = u64(0x3FB999999999999A) + u64(1) + u64(0x7FEFFFFFFFFFFFFF) +
                                u64(1ull << 63) + u64(0x3FF0000000000001) +
                                u64(0xFFF0000000000000) + u64(0x4340000000000001);
    const std::string first = u32(3) + u32(3) + u32(11) + u32(12) + "x,ysay \"hi\" ";
    const std::string second = u32(1) + u32(4) + u32(6) + "AB\nCD'";
    return segment(
        {object("/", none), object("/'g\"'", none), object("/'g\"'/'a,b'", fixed_index(10, 7)),
         object("/'g\"'/'s/1'", string_index(4, first.size())),
         object("/'g\"'/'s/2'", string_index(3, second.size()))},
        doubles + first + second);
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 2) return 2;
    const std::filesystem::path directory = arguments[1];
    std::filesystem::create_directories(directory / "odd");
    int number = 100;
    for (const auto& files : {files_to_open(), files_of_numbers(), files_of_texts()}) {
        for (const hostile_file& file : files) {
            fill(directory / std::to_string(number++), file.bytes);
        }
    }
    int failed = 0;
    const auto call = [&failed](auto function) { failed += function() != 0; };
    const auto cut = directory / "cut";
    for (const auto& path : {directory / "everything", cut}) write_everything(path.c_str(), call);
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) / 2);

    fill(directory / "odd/values", odd_values());
    // A second group behind the first: its values are there, but the library does not read them.
    const std::string groups = segment(
        {object("/'p'", none), int32s("/'p'/'c'", 1), object("/'q'", none), int32s("/'q'/'c'", 1)},
        u32(7) + u32(8));
    fill(directory / "odd/groups", groups);
    // An object of no group behind one of a group.
    fill(directory / "odd/foreign", groups + segment({int32s("/'p'/'d'", 0), object("/", none)}));
    return failed == 0 ? 0 : 1;
}
