#include "text_values.h"

#include "child_process.h"
#include "measurement_file.h"

namespace tool {
namespace {

// What goes through the pipe: a length of 64 bits and a text, again and again. The first text is
// the message if the channel cannot be read; it is empty if all texts follow.
bool send_text(std::FILE* pipe, std::string_view text)
{
    const std::uint64_t length = text.size();
    return std::fwrite(&length, sizeof length, 1, pipe) == 1 &&
           std::fwrite(text.data(), 1, length, pipe) == length;
}

bool receive_text(std::FILE* pipe, std::string& all)
{
    std::uint64_t length = 0;
    if (std::fread(&length, sizeof length, 1, pipe) != 1) return false;
    const std::size_t before = all.size();
    all.resize(before + length);
    return std::fread(all.data() + before, 1, length, pipe) == length;
}

bool send_channel(int end, void* channel, std::uint64_t count)
{
    std::FILE* const pipe = fdopen(end, "wb");
    if (pipe == nullptr) return false;
    std::vector<const char*> texts;
    std::string message;
    try {
        texts.resize(count);
        read_or_throw([&] { return get_channel_data_string(channel, texts.data()); });
    } catch (const std::exception& e) {
        message = e.what();
        texts.clear();
    }
    bool sent = send_text(pipe, message);
    for (std::size_t i = 0; sent && i != texts.size(); ++i) sent = send_text(pipe, texts[i]);
    return sent && std::fflush(pipe) == 0;
}

}  // namespace

text_values read_texts_apart(void* channel, std::uint64_t count)
{
    child_process reader("reading texts",
                         [&](int end) { return send_channel(end, channel, count) ? 0 : 1; });
    std::FILE* const from = reader.output();
    text_values texts;
    std::string message;
    bool complete = receive_text(from, message);
    for (std::uint64_t i = 0; complete && message.empty() && i != count; ++i) {
        complete = receive_text(from, texts.bytes);
        texts.ends.push_back(texts.bytes.size());
    }
    if (!message.empty()) throw failure(message);
    if (reader.wait() != 0 || !complete) {
        throw failure("reading texts: the process ended early");
    }
    return texts;
}

}  // namespace tool
