// acquire: a daemon that records the signals of a machine in one file after the other.
//
//     acquire FOLDER [SECONDS_PER_FILE [SECONDS [SECONDS_IN_MEMORY]]]
//         defaults: 60 seconds per file, 0 seconds (until SIGTERM), 600 seconds in memory
//
// A file has three groups: fast signals, slow signals and events. Its name is the time of its first
// sample. New values are saved every second; a finished file is synced and closed. SIGTERM and
// SIGINT end the program after a last save.
//
// While the disk is full, values are kept in memory, and the program tries every second to save all
// of them. When SECONDS_IN_MEMORY of them are kept, it drops new values until a save succeeds; the
// next file then starts after the gap, so that no value is missing within a file.
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <tdms.hpp>

#include "support/conversions.hpp"
#include "support/device.hpp"
#include "support/exit_status.hpp"
#include "support/stop_signal.hpp"

namespace {

// Rejects the name of an existing file, which "w" would empty.
std::string new_path(const std::string& folder, moment start)
{
    std::string name = to_text(start) + ".tdms";
    std::erase(name, ':');
    std::string path = folder + '/' + name;
    if (std::filesystem::exists(path)) throw std::runtime_error(path + ": already exists");
    return path;
}

struct recording {
    recording(const std::string& folder, moment start) : file(new_path(folder, start), "w")
    {
        file.property("title", "Machine under load");
        fast.property("start", start);
        fast.property("sampling rate", device::rate);
        acceleration.property("unit", "m/s^2");
        temperature.property("unit", "degC");
    }

    void append(const block& b)
    {
        acceleration.append(b.acceleration);
        encoder.append(b.encoder);
        slow_time.append(b.slow_times);
        temperature.append(b.temperature);
        event_time.append(b.event_times);
        event.append(b.events);
    }

    tdms::file file;
    tdms::group fast = file.add_group("fast");
    tdms::group slow = file.add_group("slow");
    tdms::group events = file.add_group("events");
    tdms::channel acceleration = fast.add_channel("acceleration");
    tdms::channel encoder = fast.add_channel("encoder");
    tdms::channel slow_time = slow.add_channel("time");
    tdms::channel temperature = slow.add_channel("temperature");
    tdms::channel event_time = events.add_channel("time");
    tdms::channel event = events.add_channel("event");
    unsigned seconds = 0;
};

bool is_full(const tdms::error& e)
{
    const int reason = e.system_error();
    return reason == ENOSPC || reason == EDQUOT || reason == EFBIG;
}

class acquisition {
  public:
    acquisition(std::string folder, unsigned seconds_per_file, unsigned seconds_in_memory)
        : folder_(std::move(folder)),
          seconds_per_file_(seconds_per_file),
          seconds_in_memory_(seconds_in_memory),
          current_(folder_, machine_.time())
    {
    }

    void run(unsigned seconds)
    {
        for (unsigned second = 1; !stopping_; ++second) {
            measure_second();
            if (second == seconds) stopping_ = true;
            save();
        }
        if (waiting_ != 0) {
            throw std::runtime_error(std::to_string(waiting_) + " s of values are lost");
        }
        current_.file.sync();
        current_.file.close();
    }

  private:
    void measure_second()
    {
        for (int i = 0; i != device::blocks_per_second && !stopping_; ++i) {
            stopping_ = stop_.wait_until(machine_.due());
            if (stopping_) return;
            const block b = machine_.next();
            if (!dropping_) current_.append(b);
        }
    }

    void save()
    {
        try {
            current_.file.save();
            if (waiting_ != 0) std::cerr << "acquire: all values kept in memory are saved\n";
            waiting_ = 0;
        } catch (const tdms::error& e) {
            if (!is_full(e)) throw;
            if (waiting_++ == 0) {
                std::cerr << "acquire: " << e.what() << " Values are kept in memory.\n";
            }
            if (waiting_ < seconds_in_memory_ || dropping_) return;
            std::cerr << "acquire: too many values are kept in memory: new ones are dropped\n";
            dropping_ = true;
            return;
        }
        ++current_.seconds;
        if (!stopping_ && (dropping_ || current_.seconds >= seconds_per_file_)) next_file();
    }

    // Continues with this file while there is no room for another one.
    void next_file()
    {
        try {
            current_.file.sync();
            recording next(folder_, machine_.time());
            current_.file.close();
            current_ = next;
            dropping_ = false;
        } catch (const tdms::error& e) {
            if (!is_full(e)) throw;
            if (current_.seconds == seconds_per_file_) std::cerr << "acquire: " << e.what() << '\n';
        }
    }

    std::string folder_;
    unsigned seconds_per_file_;
    unsigned seconds_in_memory_;
    stop_signal stop_;
    device machine_;
    recording current_;
    unsigned waiting_ = 0;   // seconds of values that are in memory only
    bool dropping_ = false;  // until the next file
    bool stopping_ = false;
};

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("acquire", [&] {
        if (argc < 2 || argc > 5) {
            throw std::invalid_argument(
                "usage: acquire FOLDER [SECONDS_PER_FILE [SECONDS [SECONDS_IN_MEMORY]]]");
        }
        acquisition a(argv[1], argc > 2 ? to_number<unsigned>(argv[2]) : 60,
                      argc > 4 ? to_number<unsigned>(argv[4]) : 600);
        a.run(argc > 3 ? to_number<unsigned>(argv[3]) : 0);
    });
}
