// One execution: the input is a scenario, which is refused, or makes a host that can be written out and read again.
#include "host/scenario/scenario.h"

#include "fuzz/files/refusal.h"

namespace {

using host::scenario::load_text;
using host::scenario::to_text;

// A host that was read stands for a scenario that is read again, and then written as before.
void write_and_read(host::Host host)
{
    const std::string text = to_text(std::move(host));
    try {
        if (to_text(load_text(text)) != text)
            fuzz::fault("a scenario that was written and read is written otherwise");
    } catch (const std::exception& refusal) {
        fuzz::fault("a scenario that was written is refused: %s", refusal.what());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    try {
        write_and_read(load_text({reinterpret_cast<const char*>(data), size}));
    } catch (const std::exception& refusal) {
        fuzz::check_refusal(refusal, "scenario");
    }
    return 0;
}
