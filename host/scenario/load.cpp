// Reads scenarios: files, and those that are built in.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "host/scenario/built_in.h"
#include "host/scenario/scenario.h"
#include "host/scenario/whole_host.h"

namespace host::scenario {

namespace {

std::string built_in_names()
{
    std::string result;
    for (const BuiltIn& each : built_in)
        result += std::string{result.empty() ? "" : ", "} + each.name;
    return result;
}

[[noreturn]] void fail_to_read(const std::string& path, const std::string& found)
{
    const bool may_be_name = path.find('/') == std::string::npos && !path.ends_with(".json");
    throw InputError(": expected a scenario file" + (may_be_name ? " or one of the names " + built_in_names() : "") +
                     ", found " + found);
}

// Anything but a file might never end.
void refuse_other_than_files(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        fail_to_read(path, std::strerror(errno));
    if (S_ISDIR(status.st_mode))
        fail_to_read(path, "a directory");
    if (S_ISFIFO(status.st_mode))
        fail_to_read(path, "a FIFO");
    if (!S_ISREG(status.st_mode))
        fail_to_read(path, "a device or a socket");
}

std::string contents_of(const std::string& path)
{
    refuse_other_than_files(path);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{std::fopen(path.c_str(), "rb"), std::fclose};
    std::string text;
    char part[1 << 16];
    while (file && !std::ferror(file.get()) && !std::feof(file.get()))
        text.append(part, std::fread(part, 1, sizeof part, file.get()));
    if (!file || std::ferror(file.get()))
        fail_to_read(path, std::strerror(errno));
    return text;
}

std::string text_of_scenario(const std::string& scenario)
{
    const auto found =
        std::ranges::find(built_in, scenario, [](const BuiltIn& each) { return std::string_view{each.name}; });
    return found == std::end(built_in) ? contents_of(scenario) : found->text;
}

// What `use` makes of a scenario, whose text `text` gives; what is wrong with it is said of `name`.
template <class Text, class Use>
auto with_json_named(const std::string& name, Text text, Use use)
{
    try {
        const Json json = Json::parsed(text());
        return use(json);
    } catch (const InputError& error) {
        const std::string message = error.what();
        throw InputError(name + (message.starts_with(": ") ? "" : ": ") + message);
    }
}

template <class Use>
auto with_json_of(const std::string& scenario, Use use)
{
    return with_json_named(
        scenario, [&] { return text_of_scenario(scenario); }, use);
}

Host read(const Json& json, bool keeps_repeated_flows)
{
    KnownSeries series;
    Host result;
    host_format(keeps_repeated_flows).read(Node{&json, &series}, result);
    result.clock = Clock{};  // the time that it took to build is none of the host's
    return result;
}

}  // namespace

Host load(const std::string& scenario)
{
    return with_json_of(scenario, [](const Json& json) { return read(json, true); });
}

Host load_text(const std::string& text)
{
    return with_json_named(
        "scenario", [&] { return text; }, [](const Json& json) { return read(json, true); });
}

void check(const std::string& scenario)
{
    with_json_of(scenario, [](const Json& json) { read(json, false); });
}

std::string with_defaults(const std::string& scenario)
{
    return with_json_of(scenario, [](const Json& json) { return to_text(read(json, false), &json); });
}

}  // namespace host::scenario
