// The interface for C++, against files that it writes itself.

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <tdms.hpp>

#include "support.h"

namespace {

using std::chrono::nanoseconds;
using tdms::property_value;

static_assert(std::ranges::input_range<tdms::property_map>);

tdms::time moment(std::int64_t since_1970)
{
    return tdms::time(nanoseconds(since_1970));
}

template <class T>
std::vector<T> some_values()
{
    using limits = std::numeric_limits<T>;
    return {limits::lowest(), T{}, T{1}, limits::max()};
}
template <>
std::vector<tdms::time> some_values()
{
    return {moment(INT64_MIN), moment(-1), moment(0), moment(INT64_MAX)};
}
template <>
std::vector<std::string> some_values()
{
    std::vector<std::string> many(3000, "\xC3\xBC");  // more than are read at once
    many.front() = "";
    many.back() = std::string(5000, 'x');
    return many;
}

template <class T>
class EveryElement : public testing::Test {
};
using elements = testing::Types<std::int8_t, std::int16_t, std::int32_t, std::int64_t, std::uint8_t,
                                std::uint16_t, std::uint32_t, std::uint64_t, float, double, bool,
                                tdms::time, std::string>;
TYPED_TEST_SUITE(EveryElement, elements);

TYPED_TEST(EveryElement, IsAppendedAndReadBack)
{
    using T = TypeParam;
    const std::vector<T> values = some_values<T>();
    const scratch_file scratch;
    {
        tdms::file f(scratch.path(), "w");
        tdms::channel c = f.add_group("g").add_channel("c");
        c.append(values);
        c.append<T>({values.front(), values.back()});
        c.append(std::array<T, 1>{values.back()});
        f.save();
    }
    const tdms::channel c = tdms::file(scratch.path())["g"]["c"];
    std::vector<T> expected = values;
    for (const T& value : {values.front(), values.back(), values.back()}) expected.push_back(value);
    EXPECT_EQ(expected, c.read<T>());
    const auto read_all = [&]<class U>() { EXPECT_EQ(expected.size(), c.read<U>().size()); };
    EXPECT_TRUE(tdms::with_type(c.type(), read_all));
    EXPECT_EQ(expected.size(), c.size());
    EXPECT_EQ(0U, c.lost());
    const auto from = expected.begin() + 2;
    EXPECT_EQ((std::vector<T>(from, from + 3)), c.read<T>(2, 3));
    std::array<T, 3> part;
    c.read<T>(2, part);
    c.read(2, part);
    EXPECT_TRUE(std::equal(part.begin(), part.end(), from));
    EXPECT_EQ(std::vector<T>{}, c.read<T>(expected.size(), 0));
    if constexpr (std::is_arithmetic_v<T>) {
        EXPECT_EQ(static_cast<double>(values.back()), c.read<double>().back());
    }
}

using values_by_name = std::map<std::string, property_value>;

values_by_name all_of(const tdms::property_map& properties)
{
    values_by_name all;
    for (const auto& [name, value] : properties) all.emplace(name, value);
    return all;
}

TEST(CppProperties, OfEveryTypeOnEveryLevelAreReplacedAndReadBack)
{
    const values_by_name first = {{"", true},
                                  {"b", std::string("before")},
                                  {"c", std::int8_t{-128}},
                                  {"d", std::int16_t{INT16_MIN}},
                                  {"e", std::int32_t{INT32_MIN}},
                                  {"f", std::int64_t{INT64_MIN}},
                                  {std::string("g\0", 2), std::uint8_t{255}}};
    const values_by_name later = {{"b", std::string("a\0b, longer than the one before", 31)},
                                  {"c", std::uint16_t{UINT16_MAX}},
                                  {"d", std::uint32_t{UINT32_MAX}},
                                  {"e", std::uint64_t{UINT64_MAX}},
                                  {"f", -std::numeric_limits<float>::infinity()},
                                  {"h", std::numeric_limits<float>::max()},
                                  {"i", -1e300},
                                  {"j", moment(-1)},
                                  {std::string("g"), std::string()}};
    values_by_name both = later;
    both.insert(first.begin(), first.end());

    const scratch_file scratch;
    const auto on_each_level = [](tdms::file f, const auto& use) {
        use(f);
        use(f["g"]);
        use(f["g"]["c"]);
        return f;
    };
    const auto set = [](auto object, const values_by_name& values) {
        for (const auto& [name, value] : values) object.property(name, value);
    };
    {
        tdms::file f(scratch.path(), "w");
        f.add_group("g").add_channel("c");
        on_each_level(f, [&](auto object) { set(object, first); }).save();
    }
    on_each_level(tdms::file(scratch.path(), "a"), [&](auto object) {
        EXPECT_EQ(first, all_of(object.properties()));
        object.properties().insert_or_assign("b", 0);
        set(object, later);
        EXPECT_EQ(both, all_of(object.properties()));
    }).save();
    on_each_level(tdms::file(scratch.path()), [&](auto object) {
        const tdms::property_map properties = object.properties();
        EXPECT_EQ(both, all_of(properties));
        EXPECT_EQ(both.size(), properties.size());
        EXPECT_TRUE(properties.contains("b") && !properties.contains("B"));
        EXPECT_EQ(4294967295.0, object.template property<double>("d"));
        EXPECT_EQ(1.0, object.template property<double>("")) << "a bool";
    });
}

TEST(CppProperties, TakeTheTypeThatTheValueHas)
{
    const scratch_file scratch;
    tdms::file f(scratch.path(), "w");
    f.property("literal", "text");
    f.property("view", std::string_view("text, and more", 4));
    f.property("long long", 5LL);
    f.property("now", std::chrono::system_clock::now());
    EXPECT_EQ("text", f.property<std::string>("literal"));
    EXPECT_EQ("text", f.property<std::string>("view"));
    EXPECT_EQ(5, f.property<std::int64_t>("long long"));
    EXPECT_EQ(5U, f.property<unsigned>("long long")) << "an integer as any that holds it";
    EXPECT_LT(moment(0), f.property<tdms::time>("now"));
}

// Other programs' files name types that have no values.
TEST(CppProperties, OfTypesWithoutValuesAreThere)
{
    const scratch_file scratch(segment({object("/'g'", none, property_p(0x0C))}));
    const tdms::file f(scratch.path());
    EXPECT_EQ(property_value(), f["g"].properties().at("p"));
    EXPECT_FALSE(tdms::with_type(0x0C, []<class T>() { ADD_FAILURE(); }));
}

struct failing {
    const char* what;
    int status;
    std::function<void()> call;
    const char* subject;
    int reason = 0;
};

// A call that must throw, its status, and what its message must name.
// clang-format off
#define FAILS(status, call, ...) {#call, status, [&] { call; }, __VA_ARGS__}
// clang-format on

void expect_failures(const std::vector<failing>& calls)
{
    for (const failing& f : calls) {
        SCOPED_TRACE(f.what);
        try {
            f.call();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const tdms::error& e) {
            EXPECT_EQ(std::pair(f.status, f.reason), std::pair(e.status(), e.system_error()));
            EXPECT_NE(nullptr, std::strstr(e.what(), f.subject)) << e.what();
            EXPECT_NE(nullptr, std::strstr(e.what(), tdms_status_text(f.status))) << e.what();
        }
    }
}

TEST(CppErrors, NameTheObjectAndTheReason)
{
    const scratch_file scratch;
    const std::string nul("a\0b", 3);
    {
        tdms::file f(scratch.path(), "w");
        tdms::group g = f.add_group("g");
        tdms::channel c = g.add_channel("c");
        c.append<std::int16_t>({1, 2, 3});
        tdms::channel strings = g.add_channel("strings");
        expect_failures({
            FAILS(TDMS_GROUP_REPEATED, f.add_group("g"), "\"g\""),
            FAILS(TDMS_CHANNEL_REPEATED, g.add_channel("c"), ": g: \"c\""),
            FAILS(TDMS_ARGUMENT, g.add_channel("c/d"), "\"c/d\""),
            FAILS(TDMS_ARGUMENT, f.add_group(nul), scratch.path()),
            FAILS(TDMS_ARGUMENT, (strings.append<std::string>({"fine", nul})), "g/strings"),
            FAILS(TDMS_CHANNEL_DATATYPE, c.append<double>({1}), ": g/c: "),
            FAILS(TDMS_ARGUMENT, c.property("p", property_value()), "g/c: \"p\""),
            FAILS(TDMS_FILE_PATH, tdms::file(scratch.path(), "a"), scratch.path(), EWOULDBLOCK),
        });
        strings.append({std::string("kept")});
        c.property("unit", "V");
        c.property("n", 777);
        f.save();
        EXPECT_EQ(1U, strings.size()) << "nothing of the rejected strings was taken";
    }
    const tdms::file f(scratch.path());
    const tdms::group g = f["g"];
    tdms::channel c = g["c"];
    std::array<std::int16_t, 2> two;
    std::vector<std::string> untouched(2000, "untouched");
    tdms::file copy = f;
    expect_failures({
        FAILS(TDMS_FILE_PATH, tdms::file("/no/such"), "/no/such: ", ENOENT),
        FAILS(TDMS_ARGUMENT, tdms::file{nul}, ""),
        FAILS(TDMS_ARGUMENT, tdms::file(scratch.path(), "x"), scratch.path()),
        FAILS(TDMS_GROUP_HANDLE, f["G"], "\"G\""),
        FAILS(TDMS_CHANNEL_HANDLE, g["d"], ": g: \"d\""),
        FAILS(TDMS_DATATYPE, c.property<double>("unit"), "g/c: \"unit\""),
        FAILS(TDMS_DATATYPE, c.property<std::int8_t>("n"), "g/c: \"n\""),
        FAILS(TDMS_RANGE, c.read<std::int16_t>(2, two), ": g/c: "),
        FAILS(TDMS_RANGE, g["strings"].read<std::string>(0, untouched), ": g/strings: "),
        FAILS(TDMS_RANGE, c.read<std::int16_t>(1, UINT64_MAX), ": g/c: "),
        FAILS(TDMS_CHANNEL_DATATYPE, c.read<std::string>(), ": g/c: "),
        FAILS(TDMS_FILE_HANDLE, c.append<std::int16_t>({1}), ": g/c: "),
        FAILS(TDMS_FILE_HANDLE, c.property("p", 1), "g/c: \"p\""),
        FAILS(TDMS_FILE_HANDLE, copy.sync(), scratch.path()),
    });
    EXPECT_EQ("untouched", untouched.front());

    std::ofstream(scratch.path()) << "a file without any segment in it";
    expect_failures({
        FAILS(TDMS_FILE_TAG, tdms::file(scratch.path()), scratch.path()),
        FAILS(TDMS_FILE_READ, copy.refresh(), scratch.path()),
        FAILS(TDMS_CHANNEL_DATA_READ, c.read<std::int16_t>(0, two), ": g/c: "),
    });
}

TEST(CppLifetime, ObjectsKeepTheirFileOpenUntilItIsClosed)
{
    const scratch_file scratch;
    tdms::channel c = tdms::file(scratch.path(), "w").add_group("g").add_channel("c");
    c.append<double>({1, 2});
    EXPECT_ANY_THROW(tdms::file(scratch.path(), "a")) << "still locked";
    tdms::channel moved = std::move(c);
    EXPECT_EQ("c", c.name()) << "moving copies";
    EXPECT_TRUE(c == moved);
    const scratch_file other;
    tdms::file f(other.path(), "w");
    tdms::group g = f.add_group("g");
    tdms::channel d = g.add_channel("d");
    EXPECT_FALSE(c == d);
    const tdms::property_map properties = d.properties();
    f.close();
    f.close();
    EXPECT_FALSE(f.is_open());
    const char* const path = other.path();
    expect_failures({
        FAILS(TDMS_FILE_HANDLE, d.size(), path),
        FAILS(TDMS_FILE_HANDLE, d.read<std::string>(0, {}), path),
        FAILS(TDMS_FILE_HANDLE, properties.begin(), path),
        FAILS(TDMS_FILE_HANDLE, g.channels(), path),
        FAILS(TDMS_FILE_HANDLE, g.add_channel("e"), path),
        FAILS(TDMS_FILE_HANDLE, f.save(), path),
    });
}

TEST(CppFollowing, PartialFilesReportTheRestAndGrow)
{
    const std::string one = segment({int32s("/'g'/'c'", 1)}, u32(7));
    const scratch_file scratch(one);
    tdms::file followed = tdms::file::partial(scratch.path());
    const tdms::channel c = followed["g"]["c"];
    scratch.fill(one + one + "TDSm");
    EXPECT_EQ(0U, followed.rest());
    followed.refresh();
    EXPECT_EQ(4U, followed.rest());
    EXPECT_EQ((std::vector<std::int32_t>{7, 7}), c.read<std::int32_t>());
    EXPECT_EQ(4U, tdms::file::partial(scratch.path()).rest());
    EXPECT_THROW(tdms::file(scratch.path()), tdms::error);
}

// Names with a NUL are in files of other programs; those that differ after it are not mixed up.
TEST(CppNames, MayHoldZeroBytes)
{
    const std::string group("/'a\0b'", 6);
    const auto channel = [&](std::string name) { return int32s(group + "/'" + name + "'", 1); };
    const scratch_file scratch(
        segment({object(group, none), channel({"c\0001", 3}), channel({"c\0002", 3}), channel("c")},
                u32(1) + u32(2) + u32(3)));
    const tdms::group g = tdms::file(scratch.path())[std::string_view("a\0b", 3)];
    EXPECT_EQ(3U, g.name().size());
    EXPECT_EQ(2, g[std::string_view("c\0002", 3)].read<std::int32_t>().at(0));
    EXPECT_EQ(3, g["c"].read<std::int32_t>().at(0));
    EXPECT_FALSE(g.contains(std::string_view("c\0003", 3)));
}

}  // namespace
