#include "codec/exported_codec.h"

#include "codec/byte_order.h"
#include "codec/lead_in.h"
#include "codec/timestamp_codec.h"

using byte_string = std::basic_string<unsigned char>;

namespace {

template <class T>
byte_string encoded(T value, bool little)
{
    byte_string bytes(sizeof(T), 0);
    tdms_impl::store(bytes.data(), value, little);
    return bytes;
}

}  // namespace

signed char read_int8(const unsigned char* p)
{
    return static_cast<signed char>(*p);
}
unsigned char read_uint8(const unsigned char* p)
{
    return *p;
}
short read_int16(const unsigned char* p, bool little)
{
    return tdms_impl::load<short>(p, little);
}
int read_int32(const unsigned char* p, bool little)
{
    return tdms_impl::load<int>(p, little);
}
long read_int64(const unsigned char* p, bool little)
{
    return tdms_impl::load<long>(p, little);
}
float read_float(const unsigned char* p, bool little)
{
    return tdms_impl::load<float>(p, little);
}
double read_double(const unsigned char* p, bool little)
{
    return tdms_impl::load<double>(p, little);
}
bool read_bool(const unsigned char* p)
{
    return *p != 0;
}

unsigned short read_uint16(const unsigned char* p, bool little)
{
    return tdms_impl::load<unsigned short>(p, little);
}

unsigned int read_uint32(const unsigned char* p, bool little)
{
    return tdms_impl::load<unsigned int>(p, little);
}

unsigned long read_uint64(const unsigned char* p, bool little)
{
    return tdms_impl::load<unsigned long>(p, little);
}

std::string read_string(const unsigned char* p, bool little)
{
    const std::size_t length = read_uint32(p, little);
    return {p + 4, p + 4 + length};
}

char read_char(const unsigned char* p, unsigned long& length, bool little)
{
    length = read_uint32(p, little);
    return static_cast<char>(p[4]);
}

std::vector<unsigned char> read_data(const unsigned char* p, unsigned int size)
{
    if (size == 0) return {};
    return {p, p + size};
}

byte_string read_string_data(const unsigned char* p, unsigned int size)
{
    if (size == 0) return {};
    return {p, size};
}

std::vector<unsigned char> read_string_data(const unsigned char* p)
{
    const std::size_t length = read_uint32(p, true);
    return {p, p + 4 + length};
}

byte_string write_int8(signed char v)
{
    return encoded(v, true);
}
byte_string write_uint8(unsigned char v)
{
    return encoded(v, true);
}
byte_string write_bool(bool v)
{
    return encoded(static_cast<unsigned char>(v), true);
}
byte_string write_int16(short v, bool little)
{
    return encoded(v, little);
}
byte_string write_uint16(unsigned short v, bool little)
{
    return encoded(v, little);
}
byte_string write_int32(int v, bool little)
{
    return encoded(v, little);
}
byte_string write_uint32(unsigned int v, bool little)
{
    return encoded(v, little);
}
byte_string write_int64(long v, bool little)
{
    return encoded(v, little);
}
byte_string write_uint64(unsigned long v, bool little)
{
    return encoded(v, little);
}
byte_string write_float(float v, bool little)
{
    return encoded(v, little);
}
byte_string write_double(double v, bool little)
{
    return encoded(v, little);
}

byte_string write_string(const std::string& s, bool little)
{
    byte_string bytes = write_uint32(static_cast<unsigned int>(s.size()), little);
    bytes.append(s.begin(), s.end());
    return bytes;
}

byte_string write_string_data(const std::vector<std::string>& strings, bool little)
{
    byte_string table;
    byte_string body;
    unsigned int end = 0;
    for (const std::string& s : strings) {
        end += static_cast<unsigned int>(s.size());
        table += write_uint32(end, little);
        body.append(s.begin(), s.end());
    }
    return table + body;
}

byte_string write_timestamp(int year, int month, int day, int hour, int minute, int second,
                            int microsecond, bool little)
{
    const timestamp_fields fields{year, month, day, hour, minute, second, microsecond};
    byte_string bytes(tdms_impl::timestamp_size, 0);
    tdms_impl::encode_timestamps(&fields, 1, bytes.data(), little);
    return bytes;
}

timestamp_fields read_timestamp(const unsigned char* p, bool little)
{
    timestamp_fields fields{};
    tdms_impl::decode_timestamps(p, 1, &fields, little);
    return fields;
}

byte_string write_leadIn(unsigned long metadata_length, unsigned long raw_length)
{
    byte_string bytes(tdms_impl::lead_in_size, 0);
    tdms_impl::store_lead_in(bytes.data(), metadata_length, raw_length);
    return bytes;
}

int read_leadIn(unsigned char* lead_in, unsigned long& metadata_length, unsigned long& raw_length)
{
    return tdms_impl::read_lead_in(lead_in, metadata_length, raw_length);
}
