// acquire: the daemon of ../acquire.cpp, recording HDF5 files.
//
//     acquire FOLDER [SECONDS_PER_FILE [SECONDS [SECONDS_IN_MEMORY]]]
//         defaults: 60 seconds per file, 0 seconds (until SIGTERM), 600 seconds in memory
//
// Files are written in single-writer mode (SWMR), so that they can be read while they are recorded.
// It does not allow strings of variable length, so an event has at most 64 bytes.
//
// After a failed write, HDF5 can lose chunks that were saved before. So every save first checks for
// room, and a write that fails nevertheless ends the program.
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "../support/conversions.hpp"
#include "../support/device.hpp"
#include "../support/exit_status.hpp"
#include "../support/hdf5.hpp"
#include "../support/stop_signal.hpp"

namespace {

h5::id string_type(std::size_t size)
{
    h5::id type(H5Tcopy(H5T_C_S1), "string type");
    h5::check(H5Tset_size(type, size), "string type");
    h5::check(H5Tset_strpad(type, H5T_STR_NULLPAD), "string type");
    h5::check(H5Tset_cset(type, H5T_CSET_UTF8), "string type");
    return type;
}

void set_attribute(hid_t object, const char* name, hid_t type, const void* value)
{
    const h5::id space(H5Screate(H5S_SCALAR), name);
    const h5::id attribute(H5Acreate2(object, name, type, space, H5P_DEFAULT, H5P_DEFAULT), name);
    h5::check(H5Awrite(attribute, type, value), name);
}

void set_attribute(hid_t object, const char* name, const std::string& text)
{
    set_attribute(object, name, string_type(text.size()), text.data());
}

void require_room(const std::string& folder, std::size_t bytes)
{
    constexpr std::size_t metadata_and_chunks = 1 << 20;
    struct statvfs facts {};
    int reason = statvfs(folder.c_str(), &facts) == 0 ? 0 : errno;
    if (reason == 0 && facts.f_bavail * facts.f_frsize < bytes + metadata_and_chunks) {
        reason = ENOSPC;
    }
    if (reason != 0) throw std::system_error(reason, std::generic_category(), folder);
}

// A dataset that grows, and the values that are not saved yet.
class series {
  public:
    series(hid_t group, const char* name, hid_t type, hsize_t chunk)
        : name_(name), type_(type), dataset_(create(group, name, type, chunk))
    {
    }

    const h5::id& dataset() const { return dataset_; }

    void append(const void* values, std::size_t count)
    {
        const char* const bytes = static_cast<const char*>(values);
        waiting_.insert(waiting_.end(), bytes, bytes + count * H5Tget_size(type_));
    }

    // Keeps the values until saved() is called: only a flush puts them in the file.
    void write()
    {
        const hsize_t count = waiting_.size() / H5Tget_size(type_);
        if (count == 0) return;
        const hsize_t size = size_ + count;
        h5::check(H5Dset_extent(dataset_, &size), name_);
        const h5::id target(H5Dget_space(dataset_), name_);
        h5::check(H5Sselect_hyperslab(target, H5S_SELECT_SET, &size_, nullptr, &count, nullptr),
                  name_);
        const h5::id source(H5Screate_simple(1, &count, nullptr), name_);
        h5::check(H5Dwrite(dataset_, type_, source, target, H5P_DEFAULT, waiting_.data()), name_);
    }

    std::size_t waiting() const { return waiting_.size(); }

    void saved()
    {
        size_ += waiting_.size() / H5Tget_size(type_);
        waiting_.clear();
    }

  private:
    static h5::id create(hid_t group, const char* name, hid_t type, hsize_t chunk)
    {
        const hsize_t none = 0;
        const hsize_t unlimited = H5S_UNLIMITED;
        const h5::id space(H5Screate_simple(1, &none, &unlimited), name);
        const h5::id creation(H5Pcreate(H5P_DATASET_CREATE), name);
        h5::check(H5Pset_chunk(creation, 1, &chunk), name);
        return {H5Dcreate2(group, name, type, space, H5P_DEFAULT, creation, H5P_DEFAULT), name};
    }

    std::string name_;
    hid_t type_;
    h5::id dataset_;
    hsize_t size_ = 0;
    std::vector<char> waiting_;
};

class recording {
  public:
    recording(const std::string& folder, moment start)
        : path_(new_path(folder, start)), file_(create(path_))
    {
        const std::string units = "ns since 1970-01-01T00:00:00Z";
        const auto nanoseconds = start.time_since_epoch().count();
        set_attribute(file_, "title", "Machine under load");
        set_attribute(fast_, "start", H5T_NATIVE_INT64, &nanoseconds);
        set_attribute(fast_, "start units", units);
        set_attribute(fast_, "sampling rate", H5T_NATIVE_INT, &device::rate);
        set_attribute(acceleration_.dataset(), "unit", "m/s^2");
        set_attribute(slow_time_.dataset(), "units", units);
        set_attribute(temperature_.dataset(), "unit", "degC");
        set_attribute(event_time_.dataset(), "units", units);
        h5::check(H5Fstart_swmr_write(file_), path_);
    }

    void append(const block& b)
    {
        acceleration_.append(b.acceleration.data(), b.acceleration.size());
        encoder_.append(b.encoder.data(), b.encoder.size());
        slow_time_.append(b.slow_times.data(), b.slow_times.size());
        temperature_.append(b.temperature.data(), b.temperature.size());
        event_time_.append(b.event_times.data(), b.event_times.size());
        for (std::string event : b.events) {
            if (event.size() > event_size) throw std::runtime_error("too long: " + event);
            event.resize(event_size);
            event_.append(event.data(), 1);
        }
    }

    void save()
    {
        std::size_t waiting = 0;
        for (const series* const s : all()) waiting += s->waiting();
        require_room(std::filesystem::path(path_).parent_path(), waiting);
        for (series* const s : all()) s->write();
        h5::check(H5Fflush(file_, H5F_SCOPE_LOCAL), path_);
        for (series* const s : all()) s->saved();
    }

    void sync()
    {
        void* descriptor = nullptr;
        h5::check(H5Fget_vfd_handle(file_, H5P_DEFAULT, &descriptor), path_);
        if (fsync(*static_cast<const int*>(descriptor)) != 0) {
            throw std::system_error(errno, std::generic_category(), path_);
        }
    }

    void close() { file_.close(path_); }

    unsigned seconds = 0;

  private:
    static constexpr std::size_t event_size = 64;

    static std::string new_path(const std::string& folder, moment start)
    {
        std::string name = to_text(start) + ".h5";
        std::erase(name, ':');
        return folder + '/' + name;
    }

    // Single-writer mode needs the latest format.
    static h5::id create(const std::string& path)
    {
        const h5::id access(H5Pcreate(H5P_FILE_ACCESS), path);
        h5::check(H5Pset_libver_bounds(access, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST), path);
        return {H5Fcreate(path.c_str(), H5F_ACC_EXCL, H5P_DEFAULT, access), path};
    }

    h5::id add_group(const char* name)
    {
        return {H5Gcreate2(file_, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
                path_ + ": " + name};
    }

    std::vector<series*> all()
    {
        return {&acceleration_, &encoder_, &slow_time_, &temperature_, &event_time_, &event_};
    }

    std::string path_;
    h5::id file_;
    h5::id fast_ = add_group("fast");
    h5::id slow_ = add_group("slow");
    h5::id events_ = add_group("events");
    h5::id event_type_ = string_type(event_size);
    series acceleration_{fast_, "acceleration", H5T_NATIVE_DOUBLE, 16384};
    series encoder_{fast_, "encoder", H5T_NATIVE_UINT32, 16384};
    series slow_time_{slow_, "time", H5T_NATIVE_INT64, 64};
    series temperature_{slow_, "temperature", H5T_NATIVE_FLOAT, 64};
    series event_time_{events_, "time", H5T_NATIVE_INT64, 64};
    series event_{events_, "event", event_type_, 64};
};

class acquisition {
  public:
    acquisition(std::string folder, unsigned seconds_per_file, unsigned seconds_in_memory)
        : folder_(std::move(folder)),
          seconds_per_file_(seconds_per_file),
          seconds_in_memory_(seconds_in_memory),
          current_(std::make_unique<recording>(folder_, machine_.time()))
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
        current_->sync();
        current_->close();
    }

  private:
    void measure_second()
    {
        for (int i = 0; i != device::blocks_per_second && !stopping_; ++i) {
            stopping_ = stop_.wait_until(machine_.due());
            if (stopping_) return;
            const block b = machine_.next();
            if (!dropping_) current_->append(b);
        }
    }

    void save()
    {
        try {
            current_->save();
            if (waiting_ != 0) std::cerr << "acquire: all values kept in memory are saved\n";
            waiting_ = 0;
            ++current_->seconds;
            if (!stopping_ && (dropping_ || current_->seconds >= seconds_per_file_)) next_file();
        } catch (const std::system_error& e) {
            if (e.code() != std::errc::no_space_on_device) throw;
            if (waiting_++ == 0) {
                std::cerr << "acquire: " << e.what() << "; values are kept in memory.\n";
            }
            if (waiting_ < seconds_in_memory_ || dropping_) return;
            std::cerr << "acquire: too many values are kept in memory: new ones are dropped\n";
            dropping_ = true;
        }
    }

    void next_file()
    {
        current_->sync();
        require_room(folder_, 0);
        auto next = std::make_unique<recording>(folder_, machine_.time());
        current_->close();
        current_ = std::move(next);
        dropping_ = false;
    }

    std::string folder_;
    unsigned seconds_per_file_;
    unsigned seconds_in_memory_;
    stop_signal stop_;
    device machine_;
    std::unique_ptr<recording> current_;
    unsigned waiting_ = 0;   // seconds of values that are in memory only
    bool dropping_ = false;  // until the next file
    bool stopping_ = false;
};

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("acquire", [&] {
        H5dont_atexit();  // it can crash after a failed write
        h5::be_silent();
        if (argc < 2 || argc > 5) {
            throw std::invalid_argument(
                "usage: acquire FOLDER [SECONDS_PER_FILE [SECONDS [SECONDS_IN_MEMORY]]]");
        }
        acquisition a(argv[1], argc > 2 ? to_number<unsigned>(argv[2]) : 60,
                      argc > 4 ? to_number<unsigned>(argv[4]) : 600);
        a.run(argc > 3 ? to_number<unsigned>(argv[3]) : 0);
    });
}
