// Reading across the end of a library's answer, which only a wrong library makes happen.
#include "core/bytes.h"

namespace qdp {

void Bytes::copy_across_the_end(Bytes bytes, size_t offset, void* out, size_t count)
{
    const Bytes rest = bytes.from(offset);
    std::memcpy(out, rest.data_, rest.size_);
    std::memset(static_cast<unsigned char*>(out) + rest.size_, 0, count - rest.size_);
}

uint64_t Bytes::word_across_the_end(Bytes bytes, size_t offset)
{
    uint64_t word;
    bytes.copy(offset, &word, sizeof word);
    return word;
}

}  // namespace qdp
