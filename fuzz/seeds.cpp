// seeds DIRECTORY: writes files to begin with, intact and not, for the fuzz target and for the
// tests of the tool. Those in the directory `odd` are intact, and their names and values unusual.
#include <filesystem>
#include <fstream>

#include "hostile_files.h"
#include "sessions.h"

namespace {

void fill(const std::filesystem::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// Doubles by their bits, and strings that need quotes in a table, in two columns that are shorter.
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
    for (const auto& files : {files_to_open(), files_of_numbers(), files_of_strings()}) {
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
    const std::string groups = segment(
        {object("/'p'", none), int32s("/'p'/'c'", 1), object("/'q'", none), int32s("/'q'/'c'", 1)},
        u32(7) + u32(8));
    fill(directory / "odd/groups", groups);
    // An object of no group after one of a group.
    fill(directory / "odd/foreign", groups + segment({int32s("/'p'/'d'", 0), object("/", none)}));
    // A string with a zero byte; then a save for which only channel a had values staged.
    const std::string string = u32(4) + "say" + std::string(1, '\0');
    fill(directory / "odd/lost",
         segment({int32s("/'g'/'a'", 1), int32s(path_c, 2),
                  object("/'g'/'s'", string_index(1, string.size()))},
                 u32(1) + u32(2) + u32(3) + string) +
             segment({int32s("/'g'/'a'", 2), int32s(path_c, 2)}, u32(4) + u32(5)));
    return failed == 0 ? 0 : 1;
}
