#include "conversion/hdf5_export.h"

#include <algorithm>
#include <functional>
#include <span>

#include "console/progress.h"
#include "console/report.h"
#include "console/text.h"
#include "conversion/hdf5_attributes.h"
#include "conversion/hdf5_types.h"
#include "conversion/names.h"
#include "files/measurement_file.h"
#include "files/piece_reader.h"
#include "files/selected_channel.h"

namespace tool {
namespace {

// After shuffling, the next levels take a third more time and save only a few per cent.
constexpr unsigned compression = 1;
constexpr hsize_t longest_chunk = 65536;
// A chunk of strings is written in several pieces, so it must fit in HDF5's cache.
constexpr hsize_t longest_chunk_of_strings = 16384;

std::string allowed_link(std::string name)
{
    for (char& c : name) {
        if (c == '/' || c == '\0') c = '_';
    }
    return name.empty() || name == "." ? "_" : name;
}

// A name that HDF5 does not allow, or that another object has, is kept in an attribute.
std::vector<named_string> original_name(const std::string& name, const std::string& link)
{
    if (name == link) return {};
    return {{"original name", name}};
}

template <class Object>
std::vector<std::string> links_to(const std::vector<Object>& objects)
{
    std::vector<std::string> names(objects.size());
    std::ranges::transform(objects, names.begin(), [](const Object& o) { return o.name(); });
    return distinct_names(names, allowed_link);
}

// The bytes that a value takes in the measurement file, as far as that is known.
template <class T>
constexpr std::uint64_t size_of_value = std::is_same_v<T, tdms::time> ? 16 : sizeof(T);

hdf5_handle create_file(const std::string& path)
{
    const hdf5_handle access(H5Pcreate(H5P_FILE_ACCESS));
    // HDF5 1.8 can read the file; older formats have no attributes of 64 KiB.
    checked(H5Pset_libver_bounds(access, H5F_LIBVER_V18, H5F_LIBVER_LATEST));
    return hdf5_handle(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access));
}

class hdf5_export {
  public:
    hdf5_export(std::string name, tdms::file from, const std::string& path)
        : name_(std::move(name)),
          from_(std::move(from)),
          shown_("converting", total()),
          file_(create_file(path)),
          link_creation_(H5Pcreate(H5P_LINK_CREATE))
    {
        checked(H5Pset_char_encoding(link_creation_, H5T_CSET_UTF8));
    }

    bool run()
    {
        put_attributes(file_, from_, {}, [this](const auto& message) { report(name_, message); });
        const std::vector<tdms::group> groups = from_.groups();
        const std::vector<std::string> links = links_to(groups);
        for (std::size_t i = 0; i != groups.size(); ++i) put(groups[i], links[i]);
        link_creation_.close();
        file_.close();
        return succeeded_;
    }

  private:
    void put(const tdms::group& g, const std::string& link)
    {
        hdf5_handle group(
            H5Gcreate2(file_, link.c_str(), link_creation_, H5P_DEFAULT, H5P_DEFAULT));
        const std::string name = g.name();
        put_attributes(group, g, original_name(name, link), noted_about(name));
        const std::vector<tdms::channel> channels = g.channels();
        const std::vector<std::string> links = links_to(channels);
        for (std::size_t i = 0; i != channels.size(); ++i) {
            put(group, g, channels[i], links[i]);
        }
        group.close();
    }

    void put(hid_t group, const tdms::group& g, const tdms::channel& c, const std::string& link)
    {
        subject_ = g.name() + '/' + c.name();
        const bool has_type =
            tdms::with_type(c.type(), [&]<class T>() { put_values<T>(group, c, link); });
        // A channel without a type has no values.
        if (!has_type) put_values<double>(group, c, link);
        try {
            const selected_channel counted(g, c);
            if (counted.lost != 0) report_error(lost_values(counted));
        } catch (const tdms::error& e) {
            report_error(message_of(e.status()));
        }
    }

    template <class T>
    void put_values(hid_t group, const tdms::channel& c, const std::string& link)
    {
        const hsize_t size = value_count_of(c);
        hdf5_handle dataset = create_dataset<T>(group, link, size);
        std::vector<named_string> own = original_name(c.name(), link);
        if (std::is_same_v<T, tdms::time>) own.emplace_back("units", unit_of_times);
        put_attributes(dataset, c, own, noted_about(subject_));
        copy<T>(c, dataset, size);
        dataset.close();
    }

    // 0 if the values cannot be located, which is reported later.
    static hsize_t value_count_of(const tdms::channel& c)
    {
        try {
            return c.size();
        } catch (const tdms::error&) {
            return 0;
        }
    }

    template <class T>
    hdf5_handle create_dataset(hid_t group, const std::string& link, hsize_t size)
    {
        constexpr bool is_number = !std::is_same_v<T, std::string>;
        const hsize_t chunk =
            std::clamp<hsize_t>(size, 1, is_number ? longest_chunk : longest_chunk_of_strings);
        const hsize_t unlimited = H5S_UNLIMITED;
        const hdf5_handle space(H5Screate_simple(1, &size, &unlimited));
        const hdf5_handle creation(H5Pcreate(H5P_DATASET_CREATE));
        checked(H5Pset_obj_track_times(creation,
                                       false));  // so that the same input yields the same bytes
        checked(H5Pset_chunk(creation, 1, &chunk));
        if (H5Zfilter_avail(H5Z_FILTER_DEFLATE) > 0) {
            if (is_number && sizeof(T) > 1) checked(H5Pset_shuffle(creation));
            checked(H5Pset_deflate(creation, compression));
        }
        return hdf5_handle(H5Dcreate2(group, link.c_str(), hdf5_type_of<T>(), space, link_creation_,
                                      creation, H5P_DEFAULT));
    }

    template <class T>
    void copy(const tdms::channel& from, const hdf5_handle& to, hsize_t size)
    {
        piece_reader<T> pieces(from, shown_);
        std::uint64_t truncated = 0;
        for (hsize_t first = 0; first != size;) {
            std::span<const T> piece;
            try {
                piece = pieces.read(first, std::min<hsize_t>(pieces.fitting(), size - first));
            } catch (const tdms::error& e) {
                report_error(message_of(e.status()));
                checked(H5Dset_extent(to, &first));
                break;
            }
            truncated += put_piece(to, first, piece);
            first += piece.size();
        }
        if (truncated == 0) return;
        report_error(number_of(truncated, "string") +
                     " truncated: in HDF5 they end at a zero byte");
    }

    // @return how many strings have a zero byte
    static std::uint64_t put_piece(hid_t to, hsize_t first, std::span<const std::string> piece)
    {
        std::vector<const char*> texts(piece.size());
        std::ranges::transform(piece, texts.begin(), &std::string::c_str);
        put_piece<std::string>(to, first, texts.size(), texts.data());
        return static_cast<std::uint64_t>(std::ranges::count_if(
            piece, [](const std::string& s) { return s.find('\0') != std::string::npos; }));
    }

    template <class T>
    static std::uint64_t put_piece(hid_t to, hsize_t first, std::span<const T> piece)
    {
        put_piece<T>(to, first, piece.size(), piece.data());
        return 0;
    }

    template <class T>
    static void put_piece(hid_t to, hsize_t first, hsize_t count, const void* values)
    {
        const hdf5_handle piece(H5Screate_simple(1, &count, nullptr));
        const hdf5_handle space(H5Dget_space(to));
        checked(H5Sselect_hyperslab(space, H5S_SELECT_SET, &first, nullptr, &count, nullptr));
        checked(H5Dwrite(to, hdf5_type_of<T>(), piece, space, H5P_DEFAULT, values));
    }

    // The bytes of all values, as far as that is known.
    std::uint64_t total() const
    {
        std::uint64_t bytes = 0;
        for (const tdms::group& g : from_.groups()) {
            for (const tdms::channel& c : g.channels()) {
                static_cast<void>(tdms::with_type(
                    c.type(), [&]<class T>() { bytes += value_count_of(c) * size_of_value<T>; }));
            }
        }
        return bytes;
    }

    // Reports something that users should know, although nothing is lost.
    std::function<void(const std::string&)> noted_about(const std::string& object) const
    {
        return [this, object](const std::string& message) {
            report(name_, in_quotes(object) + ": " + message);
        };
    }

    void report_error(const std::string& message)
    {
        report(name_, in_quotes(subject_) + ": " + message);
        succeeded_ = false;
    }

    std::string name_;
    tdms::file from_;
    progress shown_;
    hdf5_handle file_;
    hdf5_handle link_creation_;
    std::string subject_;  // the channel that is converted
    bool succeeded_ = true;
};

}  // namespace

bool export_hdf5(const std::string& name, const tdms::file& from, const std::string& path,
                 const std::string& target)
{
    // After a failed write HDF5 would try again when the process exits.
    H5dont_atexit();
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    try {
        return hdf5_export(name, from, path).run();
    } catch (const failure& e) {
        throw failure(in_quotes(target) + " cannot be written: " + e.what());
    }
}

}  // namespace tool
