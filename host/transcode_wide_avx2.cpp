// The wide conversions for processors with AVX2.
#include "host/transcode_wide.hpp"
#include "vector/lanes_avx2.hpp"

namespace jxhost {
namespace {
using Ops = jx::vector::LanesAvx2;
}

WideConvert wide_avx2(Form from, Form to) { return wide_conversion<Ops>(from, to); }

}  // namespace jxhost
