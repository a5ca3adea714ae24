// The wide conversions for processors with AVX-512.
#include "host/transcode_wide.hpp"
#include "vector/lanes_avx512.hpp"

namespace jxhost {
namespace {
using Ops = jx::vector::LanesAvx512;
}

WideConvert wide_avx512(Form from, Form to) { return wide_conversion<Ops>(from, to); }

}  // namespace jxhost
