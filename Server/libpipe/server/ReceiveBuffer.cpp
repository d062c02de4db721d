#include "ReceiveBuffer.h"

#include <new>

#include "Spares.h"

namespace wrb {
namespace {

constinit Spares<ReceiveBlockTraits> spareBlocks;

}  // namespace

ReceiveBuffer::ReceiveBuffer() noexcept
    : m_block(spareBlocks.Take([] { return new (std::nothrow) uint8_t[kBytes]; })) {}

ReceiveBuffer::~ReceiveBuffer() {
    spareBlocks.Keep(std::move(m_block));
}

}  // namespace wrb
