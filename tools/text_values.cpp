#include "text_values.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "measurement_file.h"

namespace tool {
namespace {

using stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

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

bool send_channel(std::FILE* pipe, void* channel, std::uint64_t count)
{
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
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw system_failure("reading texts");
    const pid_t child = fork();
    if (child < 0) throw system_failure("reading texts");
    if (child == 0) _exit(send_channel(fdopen(ends[1], "wb"), channel, count) ? 0 : 1);
    close(ends[1]);

    text_values texts;
    std::string message;
    stream from(fdopen(ends[0], "rb"), std::fclose);
    bool complete = receive_text(from.get(), message);
    for (std::uint64_t i = 0; complete && message.empty() && i != count; ++i) {
        complete = receive_text(from.get(), texts.bytes);
        texts.ends.push_back(texts.bytes.size());
    }
    from.reset();
    int result = 0;
    while (waitpid(child, &result, 0) < 0 && errno == EINTR) {
    }
    if (!message.empty()) throw failure(message);
    if (!complete || result != 0) throw failure("reading texts: the process ended early");
    return texts;
}

}  // namespace tool
