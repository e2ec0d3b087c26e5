#include "conversion/csv_import.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <system_error>
#include <tdms.hpp>
#include <utility>
#include <vector>

#include "console/progress.h"
#include "console/report.h"
#include "console/text.h"
#include "console/value_text.h"
#include "conversion/column_writer.h"
#include "conversion/csv_reader.h"
#include "conversion/csv_values.h"
#include "files/measurement_file.h"

namespace tool {
namespace {

constexpr std::size_t bytes_at_once = 8 << 20;

struct planned_column {
    std::string group;
    std::string channel;
    std::string unit;
    csv_column_profile profile;
    std::unique_ptr<column_writer> writer;

    bool has_name() const { return !channel.empty() || group != "data"; }
    std::string name() const { return in_quotes(group + '/' + channel); }
};

class csv_import {
  public:
    csv_import(const input& from, std::string name, bool has_units)
        : name_(std::move(name)),
          has_units_(has_units),
          reader_(from.file(), from.size()),
          shown_("converting", 2 * from.size())
    {
        read_names();
        read_units();
        find_types();
    }

    /// Such as "2 channels (1 double, 1 timestamp), 1,000 rows".
    std::string summary() const
    {
        std::map<std::string, std::uint64_t> types;
        std::uint64_t rows = 0;
        std::uint64_t channels = 0;
        for (const planned_column& c : columns_) {
            if (!c.has_name()) continue;
            ++channels;
            ++types[type_name(c.profile.type())];
            rows = std::max(rows, c.profile.count());
        }
        std::string text = number_of(channels, "channel");
        const char* before = " (";
        for (const auto& [type, count] : types) {
            text.append(std::exchange(before, ", ")).append(with_commas(count));
            text.append(" ").append(type);
        }
        return text.append("), ").append(number_of(rows, "row"));
    }

    void write(const std::string& path)
    {
        tdms::file file(path, "w");
        for (planned_column& c : columns_) add_channel(file, c);
        copy_values(file);
        file.close();
    }

  private:
    void read_names()
    {
        if (!reader_.next(record_)) throw failure("the file is empty: it has no line of names");
        std::set<std::pair<std::string, std::string>> known;
        for (const csv_field& field : record_) {
            planned_column c = planned(field.text);
            const bool is_new = known.emplace(c.group, c.channel).second;
            if (!is_new && c.has_name()) reader_.fail("two columns are named " + c.name());
            columns_.push_back(std::move(c));
        }
    }

    planned_column planned(std::string_view name)
    {
        const std::size_t slash = name.find('/');
        const bool in_group = slash != std::string_view::npos;
        planned_column c{std::string(in_group ? name.substr(0, slash) : "data"),
                         std::string(in_group ? name.substr(slash + 1) : name),
                         {},
                         csv_column_profile(reader_.separator() == ';'),
                         nullptr};
        if (c.channel.find('/') != std::string::npos) {
            reader_.fail("the name of a channel cannot have a slash: " + c.name());
        }
        if (name.find('\0') != std::string_view::npos) {
            reader_.fail("a zero byte, which a name cannot have");
        }
        return c;
    }

    void read_units()
    {
        if (!has_units_ || !next()) return;
        for (std::size_t i = 0; i != record_.size(); ++i) columns_[i].unit = record_[i].text;
    }

    void find_types()
    {
        while (next()) {
            for (std::size_t i = 0; i != record_.size(); ++i) columns_[i].profile.take(record_[i]);
        }
        // A separator at the end of every line makes an empty column, which is left out.
        for (std::size_t i = 0; i != columns_.size(); ++i) {
            if (!columns_[i].has_name() && columns_[i].profile.count() != 0) {
                throw failure("column " + std::to_string(i + 1) + " has values but no name");
            }
        }
        for (const planned_column& c : columns_) {
            if (c.profile.is_rounded()) {
                report(name_, c.name() + ": integers beyond 2^53 are rounded, because " +
                                  "other values of the column need floating point");
            }
            if (c.profile.has_no_offset()) {
                report(name_, c.name() + ": times without an offset are taken as " +
                                  (times_are_local() ? "local" : "UTC; see --local"));
            }
        }
    }

    static void add_channel(tdms::file& file, planned_column& c)
    {
        if (!c.has_name()) return;
        tdms::group group = file.contains(c.group) ? file[c.group] : file.add_group(c.group);
        tdms::channel channel = group.add_channel(c.channel);
        if (!c.unit.empty()) channel.property("unit", c.unit);
        c.writer = writer_of(c.profile, channel);
    }

    void copy_values(tdms::file& file)
    {
        const std::uint64_t position_before = reader_.position();
        reader_.rewind();
        for (int lines = has_units_ ? 2 : 1; lines != 0; --lines) reader_.next(record_);
        std::size_t held = 0;
        for (std::uint64_t row = 0; next(position_before); ++row) {
            for (std::size_t i = 0; i != columns_.size(); ++i) held += copy_value(i, row);
            if (held < bytes_at_once) continue;
            save(file);
            held = 0;
        }
        save(file);
    }

    std::size_t copy_value(std::size_t i, std::uint64_t row)
    {
        const planned_column& c = columns_[i];
        if (!c.writer || row >= c.profile.count()) return 0;
        const csv_field field = i < record_.size() ? record_[i] : csv_field{};
        const std::size_t bytes = c.writer->add(field);
        if (bytes == 0 && field.text.find('\0') != std::string_view::npos) {
            reader_.fail("a zero byte, which a string cannot have");
        }
        if (bytes == 0) reader_.fail("the file was changed while it was read");
        return bytes;
    }

    void save(tdms::file& file)
    {
        for (planned_column& c : columns_) {
            if (c.writer) c.writer->flush();
        }
        file.save();
    }

    bool next(std::uint64_t bytes_before = 0)
    {
        if (!reader_.next(record_)) return false;
        shown_.at(bytes_before + reader_.position());
        if (record_.size() > columns_.size()) {
            reader_.fail(number_of(record_.size(), "field") + ", but " +
                         number_of(columns_.size(), "name"));
        }
        return true;
    }

    std::string name_;
    bool has_units_;
    csv_reader reader_;
    progress shown_;
    std::vector<planned_column> columns_;
    std::vector<csv_field> record_;
};

}  // namespace

std::string import_csv(const input& from, const std::string& name, bool has_units,
                       const std::string& path, const std::string& target)
{
    csv_import work(from, name, has_units);
    try {
        work.write(path);
        return work.summary();
    } catch (const tdms::error& e) {
        std::string message = in_quotes(target) + " cannot be written: ";
        message += e.system_error() == 0 ? tdms_status_text(e.status())
                                         : std::generic_category().message(e.system_error());
        throw failure(message);
    }
}

}  // namespace tool
