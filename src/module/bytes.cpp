// Reading across the end of a library's answer, which only a wrong library makes happen.
#include "module/bytes.h"

namespace qdp {

void Bytes::copy_across_the_end(Bytes bytes, size_t offset, void* out, size_t count)
{
    const Bytes rest = bytes.from(offset);
    const size_t there = count < rest.size_ ? count : rest.size_;
    std::memcpy(out, rest.data_, there);
    std::memset(static_cast<unsigned char*>(out) + there, 0, count - there);
}

}  // namespace qdp
