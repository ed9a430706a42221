// Reads scenarios.
#include <cerrno>
#include <cstdio>
#include <memory>

#include "host/scenario/scenario.h"
#include "host/scenario/whole_host.h"

namespace host::scenario {

// The text of default.json, which the build puts in here.
extern const char default_text[];

namespace {

std::string contents_of(const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{std::fopen(path.c_str(), "rb"), std::fclose};
    std::string text;
    char part[1 << 16];
    while (file && !std::ferror(file.get()) && !std::feof(file.get()))
        text.append(part, std::fread(part, 1, sizeof part, file.get()));
    if (!file || std::ferror(file.get()))
        throw Error(": expected a scenario file, found " + std::string{std::strerror(errno)});
    return text;
}

// "line 3, column 5", counted from 1, of the byte before which parsing stopped.
std::string position(const std::string& text, size_t end)
{
    const std::string_view before = std::string_view{text}.substr(0, end > 0 ? end - 1 : 0);
    const auto line = std::ranges::count(before, '\n') + 1;
    const size_t column = before.size() - (before.rfind('\n') + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// What the parser read last may be anything.
std::string printable(const std::string& text)
{
    constexpr size_t longest = 200;
    std::string made = text.size() > longest ? text.substr(0, longest) + "..." : text;
    std::ranges::replace_if(
        made, [](char character) { return character < ' ' || character > '~'; }, '?');
    return made;
}

Json parsed(const std::string& text)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        // Behind the library's own words about where.
        const std::string message = error.what();
        const size_t reason = message.find(": ");
        throw Error(position(text, error.byte) + ": expected JSON, found a " +
                    printable(reason == std::string::npos ? message : message.substr(reason + 2)));
    }
}

Host read(const std::string& text)
{
    const Json json = parsed(text);
    KnownSteps steps;
    Host made;
    whole_host.read(Place{&json, &steps}, made);
    made.clock = Clock{};  // the time that it took to build is none of the host's
    return made;
}

}  // namespace

Host load(const std::string& path)
{
    try {
        return read(contents_of(path));
    } catch (const Error& error) {
        const std::string message = error.what();
        throw Error(path + (message.starts_with(": ") ? "" : ": ") + message);
    }
}

Host load_default()
{
    return read(default_text);
}

}  // namespace host::scenario
