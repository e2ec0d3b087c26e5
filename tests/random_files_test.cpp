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
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> made;
        for (int i = 0; i != 1000; ++i) made.push_back(std::string(i % 5, 'x') + std::to_string(i));
        return made;
    }();
    number %= 1000;
    if constexpr (std::is_same_v<T, const char*>) {
        return number % 7 == 0 ? "" : texts[static_cast<std::size_t>(number)].c_str();
    } else if constexpr (std::is_same_v<T, timestamp_fields>) {
        return {2024, 1 + number % 12, 1, 0, 0, number % 60, number};
    } else {
        return static_cast<T>(number * 77);
    }
}

struct model_channel {
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
};

template <class Use>
void with_element(int type, Use use)
{
    for_each_element([&]<class Element>(Element element) {
        if (Element::code == type) use(element);
    });
}

class session {
  public:
    explicit session(std::size_t groups) : channels_(groups) {}

    void open(bool first)
    {
        old_ = below(2) == 0;
        const char* const mode = first ? "w" : "a";
        const auto open = old_ ? open_file : tdms_open;
        ASSERT_EQ(0, open(scratch_.path(), mode, &handle_));
        for (std::size_t g = 0; g != channels_.size(); ++g) {
            for (std::size_t c = 0; c != channels_[g].size(); ++c) {
                model_channel& m = channels_[g][c];
                m.handle = find(handle_, g, c);
                if (m.handle == nullptr) m.handle = create(g, c);  // it was never saved
                m.type = get_channel_datatype(m.handle);
                m.staged.clear();
                m.unsaved = false;
                m.stated = old_ ? m.latest : 0;
            }
        }
    }

    void close() { ASSERT_EQ(0, (below(2) == 0 ? close_file : tdms_close)(&handle_)); }

    void step()
    {
        const std::size_t g = below(channels_.size());
        auto& group = channels_[g];
        switch (below(12)) {
            case 0:
                if (group.size() < 9) add_channel_to(g);
                break;
            case 1:
                save_by_stream();
                break;
            case 2:
            case 3:
                save();
                break;
            case 4:
                check(handle_);
                break;
            default:
                if (!group.empty()) stage(group[below(group.size())]);
        }
    }

    // Every channel of an open file against the model, or at least against a part of it.
    void check(void* file, bool all = true) const
    {
        for (std::size_t g = 0; g != channels_.size(); ++g) {
            for (std::size_t c = 0; c != channels_[g].size(); ++c) {
                void* const handle = find(file, g, c);
                if (handle != nullptr) check(handle, channels_[g][c], all);
                EXPECT_TRUE(handle != nullptr || !all || channels_[g][c].stored.empty());
            }
        }
    }

    // Of one group, the first functions read everything but what is lost.
    void check_by_first_functions() const
    {
        const open_tdms file(scratch_, "r");
        ASSERT_EQ(0, file.status);
        std::uint64_t lost = 0;
        for (const model_channel& m : channels_[0]) lost += m.lost;
        if (channels_.size() != 1 || lost != 0) return;
        for (std::size_t c = 0; c != channels_[0].size(); ++c) {
            const model_channel& m = channels_[0][c];
            with_element(m.type, [&]<class Element>(Element) {
                if (m.type == TDMS_TYPE_STRING || m.stored.empty()) return;
                const auto values = std::make_unique<typename Element::value[]>(m.stored.size());
                ASSERT_EQ(0, Element::get(find(file.handle, 0, c), values.get()));
                expect_values<Element>(m, 0, m.stored.size(), values.get());
            });
        }
    }

    const scratch_file& scratch() const { return scratch_; }

  private:
    static std::string name(char kind, std::size_t i) { return kind + std::to_string(i); }

    static void* find(void* file, std::size_t g, std::size_t c)
    {
        void* found = nullptr;
        if (tdms_find_group(file, name('g', g).c_str(), &found) != TDMS_OK) return nullptr;
        return tdms_find_channel(found, name('c', c).c_str(), &found) == TDMS_OK ? found : nullptr;
    }

    void* create(std::size_t g, std::size_t c)
    {
        void* group = nullptr;
        void* channel = nullptr;
        if (tdms_find_group(handle_, name('g', g).c_str(), &group) != TDMS_OK) {
            EXPECT_EQ(0, tdms_create_group(handle_, name('g', g).c_str(), &group));
        }
        EXPECT_EQ(0, tdms_create_channel(group, name('c', c).c_str(), &channel));
        return channel;
    }

    void add_channel_to(std::size_t g)
    {
        model_channel added;
        added.handle = create(g, channels_[g].size());
        if (below(3) == 0) create_channel_property_int8(added.handle, "p", 1);
        channels_[g].push_back(added);
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

    template <class Use>
    void for_each(Use use)
    {
        for (auto& group : channels_) {
            for (model_channel& m : group) use(m);
        }
    }

    static void store(model_channel& m, bool found)
    {
        if (found && m.complete()) {
            m.stored.insert(m.stored.end(), m.staged.begin(), m.staged.end());
        } else {
            m.lost += m.stated;
        }
    }

    void save()
    {
        ASSERT_EQ(0, tdms_save(handle_));
        for_each([](model_channel& m) {
            if (!m.unsaved || m.staged.empty()) return;
            store(m, true);
            m.latest = m.stated;
            m.staged.clear();
            m.stated = 0;
            m.unsaved = false;
        });
    }

    // Of several timestamp channels, only the last one's values are stored. Where a channel was not
    // staged, the others can be found if each of them states another count than before.
    void save_by_stream()
    {
        ASSERT_EQ(0, save_file(handle_));
        model_channel* last_time = nullptr;
        bool missing = false;
        bool others_changed = true;
        for_each([&](model_channel& m) {
            if (m.type == TDMS_TYPE_TIMESTAMP) last_time = &m;
            if (!m.is_fixed_size() || m.stated == 0) return;
            if (!m.complete()) missing = true;
            if (m.complete() && m.stated == m.latest) others_changed = false;
        });
        for_each([&](model_channel& m) {
            store(m, m.type == TDMS_TYPE_TIMESTAMP ? &m == last_time : !missing || others_changed);
            m.latest = m.stated;
            m.unsaved = false;
        });
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
        if (all) {
            ASSERT_EQ(std::pair(m.stored.size(), m.lost), std::pair(count, lost));
        }
        ASSERT_GE(m.stored.size(), count);
        const std::size_t first = below(count + 1);
        const std::size_t part = below(count - first + 1);
        with_element(m.type, [&, count = count]<class Element>(Element) {
            const auto values = std::make_unique<typename Element::value[]>(part);
            ASSERT_EQ(0, Element::read(handle, first, part, values.get()));
            expect_values<Element>(m, first, part, values.get());
            EXPECT_EQ(TDMS_RANGE, Element::read(handle, first, count - first + 1, values.get()));
        });
        if (m.type != TDMS_TYPE_STRING && m.type != TDMS_TYPE_TIMESTAMP && m.type != 0) {
            std::vector<double> doubles(part);
            ASSERT_EQ(0, tdms_read_double(handle, first, part, doubles.data()));
            with_element(m.type, [&]<class Element>(Element) {
                if constexpr (std::is_arithmetic_v<typename Element::value>) {
                    for (std::size_t i = 0; i != part; ++i) {
                        ASSERT_EQ(static_cast<double>(value_of<Element>(m.stored[first + i])),
                                  doubles[i]);
                    }
                }
            });
        }
    }

    const scratch_file scratch_;
    std::vector<std::vector<model_channel>> channels_;
    void* handle_ = nullptr;
    bool old_ = false;
    int next_ = 1;
};

// What is cut anywhere opens with a beginning of every channel, and a handle that follows the file
// while it grows again comes to know all of it.
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
    for (int round = 0; round != 400 && !HasFailure(); ++round) {
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
