// Random sessions over random files, by both interfaces in turn and mixed on one handle, against a
// plain model of what each save stores.
#include <random>

#include "elements.h"
#include "support.h"

namespace {

std::mt19937_64 random_numbers;

std::size_t below(std::size_t end)
{
    return random_numbers() % end;
}

// A value is known by its number.
template <class Element>
typename Element::value value_of(int number)
{
    using T = typename Element::value;
    static std::string strings[1000];
    number %= 1000;
    if constexpr (std::is_same_v<T, const char*>) {
        std::string& string = strings[number];
        if (number % 7 != 0) string = std::to_string(number).insert(0, number % 5u, 'x');
        return string.c_str();
    } else if constexpr (std::is_same_v<T, timestamp_fields>) {
        return {2024, 1 + number % 12, 1, 0, 0, number % 60, number};
    } else {
        return static_cast<T>(number * 77);
    }
}

struct model_channel {
    std::string group;
    std::string name;
    void* handle = nullptr;
    int type = 0;  // 0 while it is open
    std::vector<int> stored;
    std::uint64_t lost = 0;
    std::vector<int> staged;
    bool unsaved = false;
    std::uint64_t stated = 0;  // the count that save_file() would state now
    std::uint64_t latest = 0;  // the count that the file states last

    bool complete() const { return staged.size() == stated; }
    bool is_fixed_size() const { return type != TDMS_TYPE_STRING && type != TDMS_TYPE_TIMESTAMP; }

    void* find(void* file) const
    {
        void* found = nullptr;
        if (tdms_find_group(file, group.c_str(), &found) != TDMS_OK) return nullptr;
        return tdms_find_channel(found, name.c_str(), &found) == TDMS_OK ? found : nullptr;
    }
};

class session {
  public:
    explicit session(std::size_t groups) : groups_(groups) {}

    void open(bool first)
    {
        const bool old = below(2) == 0;
        const auto open = old ? open_file : tdms_open;
        ASSERT_EQ(0, open(scratch_.path(), first ? "w" : "a", &file_.handle));
        for (model_channel& m : channels_) {
            m.handle = file_.channel(m.group.c_str(), m.name.c_str());  // it may not be saved
            m.type = get_channel_datatype(m.handle);
            m.staged.clear();
            m.unsaved = false;
            m.stated = old ? m.latest : 0;
        }
    }

    void close() { ASSERT_EQ(0, (below(2) == 0 ? close_file : tdms_close)(&file_.handle)); }

    void step()
    {
        const std::size_t what = below(12);
        if (what == 0 && channels_.size() < 9) add_channel();
        if (what == 1) save_by_stream();
        if (what == 2 || what == 3) save();
        if (what == 4) check(file_.handle);
        if (what > 4 && !channels_.empty()) stage(channels_[below(channels_.size())]);
    }

    // Every channel of an open file against the model, or at least against a part of it.
    void check(void* file, bool all = true) const
    {
        for (const model_channel& m : channels_) {
            void* const handle = m.find(file);
            if (handle != nullptr) check(handle, m, all);
            EXPECT_TRUE(handle != nullptr || !all || m.stored.empty());
        }
    }

    // Of one group, the first functions read everything but what is lost.
    void check_by_first_functions() const
    {
        const open_tdms file(scratch_, "r");
        ASSERT_EQ(0, file.status);
        const bool lost = std::ranges::any_of(channels_, [](auto& m) { return m.lost != 0; });
        for (const model_channel& m : channels_) {
            if (groups_ != 1 || lost || m.type == TDMS_TYPE_STRING || m.stored.empty()) continue;
            with_element(m.type, [&]<class Element>(Element) {
                const auto values = std::make_unique<typename Element::value[]>(m.stored.size());
                ASSERT_EQ(0, Element::get(m.find(file.handle), values.get()));
                expect_values<Element>(m, 0, m.stored.size(), values.get());
            });
        }
    }

    const scratch_file& scratch() const { return scratch_; }

  private:
    void add_channel()
    {
        model_channel added;
        added.group = "g" + std::to_string(below(groups_));
        added.name = "c" + std::to_string(channels_.size());
        added.handle = file_.channel(added.group.c_str(), added.name.c_str());
        if (below(3) == 0) create_channel_property_int8(added.handle, "p", 1);
        channels_.push_back(added);
    }

    // Stages some values, in place of those before, or after them.
    void stage(model_channel& m)
    {
        constexpr int types[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 32, 32, 33, 68, 68};
        if (m.type == 0) m.type = types[below(std::size(types))];
        const bool append = below(2) == 0;
        std::vector<int> numbers(below(3) == 0 ? below(40) : below(3));
        for (int& number : numbers) number = next_++;
        with_element(m.type, [&]<class Element>(Element) {
            const auto values = std::make_unique<typename Element::value[]>(numbers.size());
            std::transform(numbers.begin(), numbers.end(), values.get(), value_of<Element>);
            const auto call = append ? Element::append : Element::set;
            ASSERT_EQ(0, call(m.handle, numbers.size(), values.get()));
        });
        if (!append || !m.unsaved) m.staged.clear();
        m.staged.insert(m.staged.end(), numbers.begin(), numbers.end());
        m.stated = m.staged.size();
        m.unsaved = true;
    }

    static void store(model_channel& m, bool found)
    {
        const bool stored = found && m.complete();
        if (!stored) m.lost += m.stated;
        if (stored) m.stored.insert(m.stored.end(), m.staged.begin(), m.staged.end());
    }

    void save()
    {
        ASSERT_EQ(0, tdms_save(file_.handle));
        for (model_channel& m : channels_) {
            if (!m.unsaved || m.staged.empty()) continue;
            store(m, true);
            m.latest = std::exchange(m.stated, 0);
            m.staged.clear();
            m.unsaved = false;
        }
    }

    // Of several timestamp channels, only the last one's values are stored. Where a channel was not
    // staged, the others can be found if each of them states another count than before.
    void save_by_stream()
    {
        ASSERT_EQ(0, save_file(file_.handle));
        std::pair<std::string, std::string> last_time;
        bool missing = false;
        bool others_changed = true;
        for (const model_channel& m : channels_) {
            if (m.type == TDMS_TYPE_TIMESTAMP) last_time = std::max(last_time, {m.group, m.name});
            if (!m.is_fixed_size() || m.stated == 0) continue;
            if (!m.complete()) missing = true;
            if (m.complete() && m.stated == m.latest) others_changed = false;
        }
        for (model_channel& m : channels_) {
            const bool last = last_time == std::pair(m.group, m.name);
            store(m, m.type == TDMS_TYPE_TIMESTAMP ? last : !missing || others_changed);
            m.latest = m.stated;
            m.unsaved = false;
        }
    }

    template <class Element>
    static void expect_values(const model_channel& m, std::size_t first, std::size_t count,
                              const typename Element::value* values)
    {
        for (std::size_t i = 0; i != count; ++i) {
            ASSERT_TRUE(is_same(value_of<Element>(m.stored[first + i]), values[i])) << first + i;
        }
    }

    static void check(void* handle, const model_channel& m, bool all)
    {
        const auto [count, lost] = found_and_lost(handle);
        ASSERT_GE(m.stored.size(), count);
        ASSERT_TRUE(!all || std::pair(m.stored.size(), m.lost) == std::pair(count, lost));
        const std::size_t first = below(count + 1);
        const std::size_t part = below(count - first + 1);
        with_element(m.type, [&, count = count]<class Element>(Element) {
            const auto values = std::make_unique<typename Element::value[]>(part);
            ASSERT_EQ(0, Element::read(handle, first, part, values.get()));
            expect_values<Element>(m, first, part, values.get());
            EXPECT_EQ(TDMS_RANGE, Element::read(handle, first, count - first + 1, values.get()));
            if constexpr (std::is_arithmetic_v<typename Element::value>) {
                std::vector<double> doubles(part);
                ASSERT_EQ(0, tdms_read_double(handle, first, part, doubles.data()));
                for (std::size_t i = 0; i != part; ++i) {
                    const auto expected = value_of<Element>(m.stored[first + i]);
                    ASSERT_EQ(static_cast<double>(expected), doubles[i]);
                }
            }
        });
    }

    const scratch_file scratch_;
    const std::size_t groups_;
    std::vector<model_channel> channels_;
    tdms_file file_;
    int next_ = 1;
};

// What is truncated anywhere opens with a beginning of every channel, and a handle that follows the
// file while it grows again comes to know all of it.
void check_cut(const session& s)
{
    const std::string bytes = s.scratch().bytes();
    const scratch_file cut(bytes.substr(0, below(bytes.size() + 1)));
    const tdms_file growing(cut);
    ASSERT_EQ(0, growing.status);
    s.check(growing.handle, false);
    for (const std::size_t size : {bytes.size() / 2, bytes.size()}) {
        if (size < cut.bytes().size()) continue;
        cut.fill(bytes.substr(0, size));
        std::uint64_t rest = 1;
        ASSERT_EQ(0, tdms_refresh(growing.handle, &rest));
        s.check(growing.handle, size == bytes.size());
        EXPECT_TRUE(size != bytes.size() || rest == 0);
    }
}

TEST(RandomFiles, EveryRangeOfEveryChannelAsSaved)
{
    set_time_zone("UTC");
    for (int round = 0; round != rounds(1500) && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        random_numbers.seed(static_cast<std::uint64_t>(round));
        session s(1 + below(3));
        const std::size_t handles = 1 + below(4);
        for (std::size_t i = 0; i != handles; ++i) {
            s.open(i == 0);
            for (std::size_t steps = below(40); steps != 0 && !HasFailure(); --steps) s.step();
            s.close();
        }
        const tdms_file again(s.scratch(), "r");
        ASSERT_EQ(0, again.status);
        s.check(again.handle);
        s.check_by_first_functions();
        check_cut(s);
    }
}

}  // namespace
