// server: answers requests for values of the recordings in a folder, with eight threads.
//
//     server FOLDER [PORT]        default: any free port, which it prints
//
// Listens on a TCP port of this computer. A request is a line with tabs between its fields, such as
//
//     printf 'run.tdms\tfast\tacceleration\t0\t10\n' | nc 127.0.0.1 PORT
//
// for ten values from index 0 on. The answer is a line "ok 10", followed by one line per value, or
// a single line "error: ..." with a message. Files can be read while they are recorded. SIGTERM and
// SIGINT end the server.
//
// Only one thread may use a file at a time, so every thread opens the files that it needs itself.
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>
#include <tdms.hpp>
#include <utility>

#include "support/conversions.hpp"
#include "support/exit_status.hpp"
#include "support/line_server.hpp"
#include "support/range_request.hpp"

namespace {

template <class T>
std::string to_lines(const tdms::channel& c, const range_request& r)
{
    std::string text = "ok " + to_text(r.count) + '\n';
    for (const T& value : c.read<T>(r.first, r.count)) text += to_text(value) + '\n';
    return text;
}

// The open files of one thread.
class recordings {
  public:
    explicit recordings(std::string folder) : folder_(std::move(folder)) {}

    std::string answer(const range_request& r)
    {
        const tdms::channel c = open(r.file)[r.group][r.channel];
        switch (c.type()) {
            case TDMS_TYPE_STRING:
                return to_lines<std::string>(c, r);
            case TDMS_TYPE_TIMESTAMP:
                return to_lines<tdms::time>(c, r);
            default:
                return to_lines<double>(c, r);
        }
    }

  private:
    // Identifies files by device and inode: another file can take over a name.
    tdms::file open(const std::string& name)
    {
        constexpr std::size_t most_files = 16;
        const std::string path = folder_ + '/' + name;
        struct stat facts {};
        if (stat(path.c_str(), &facts) != 0) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        const std::pair file_id(facts.st_dev, facts.st_ino);
        if (const auto known = files_.find(file_id); known != files_.end()) {
            try {
                known->second.refresh();
                return known->second;
            } catch (const tdms::error&) {
                files_.erase(known);  // it was emptied and is being recorded again
            }
        }
        if (files_.size() == most_files) files_.clear();
        return files_.emplace(file_id, tdms::file::partial(path)).first->second;
    }

    std::string folder_;
    std::map<std::pair<dev_t, ino_t>, tdms::file> files_;
};

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("server", [&] {
        if (argc < 2 || argc > 3) throw std::invalid_argument("usage: server FOLDER [PORT]");
        line_server server(argc > 2 ? to_number<std::uint16_t>(argv[2]) : std::uint16_t(0));
        server.run(8, [&] {
            return [files = recordings(argv[1])](const std::string& line) mutable {
                return files.answer(to_request(line));
            };
        });
    });
}
