// The registry of answers.
#include "host/answers/answer.h"

#include <cstdio>
#include <cstdlib>
#include <map>

namespace host {

namespace {

// Made by the first answer that registers itself, while the library is loaded.
std::map<std::string_view, RegisteredAnswer>& registered()
{
    static auto* answers = new std::map<std::string_view, RegisteredAnswer>;
    return *answers;
}

}  // namespace

const RegisteredAnswer* answer_of(std::string_view operation)
{
    const auto found = registered().find(operation);
    return found == registered().end() ? nullptr : &found->second;
}

void Answer::add(const char* operation, size_t num_parameters, RegisteredAnswer answer)
{
    const Signature* signature = find_signature(operation);
    if (!signature) {
        std::fprintf(stderr, "qdp-host: %s has an answer, and no line in the table of operations\n", operation);
        std::abort();
    }
    if (num_parameters != signature->num_arguments()) {
        std::fprintf(stderr, "qdp-host: the answer of %s takes %zu arguments instead of %zu\n", operation,
                     num_parameters, signature->num_arguments());
        std::abort();
    }
    registered()[signature->name] = answer;
}

}  // namespace host
