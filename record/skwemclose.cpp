// skwem_close: closes the file and releases the record layer's part of its handle.
#include "jx/exports/record.h"
#include "record/record.hpp"

namespace jx {

void release_record_layer(FileHandle *handle) {
  const auto release = [handle](uint8_t *&block) {
    const PoolBlock<uint8_t> owner(handle->pool, std::exchange(block, nullptr));
  };
  release(handle->buffer.data);
  for (ControlCopy &copy : handle->controls.outbound) release(copy.text);
  for (ControlCopy &copy : handle->controls.inbound) release(copy.text);
}

}  // namespace jx

extern "C" JXStatus skwem_close(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  const JXStatus status = handle->methods.host_close(file);
  if (status != JX_OK) return status;
  jx::release_record_layer(handle);
  return JX_OK;
}
