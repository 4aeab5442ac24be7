// Pixel blocks of one size, handed out again once their user is done with
// them. A sequence needs the same few frame-sized blocks for every frame;
// full-HD float frames are tens of megabytes, and fresh ones would cost the
// system's page clearing on every frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

class BufferPool {
public:
    explicit BufferPool(size_t bytes);

    // A block of the pool's size, holding whatever its last user left; it
    // goes back to the pool when the last copy of the pointer goes. Null
    // when there is no memory. Safe from any thread, and the pool may go
    // before its blocks do.
    std::shared_ptr<uint8_t> Take();

    size_t Bytes() const { return bytes; }

private:
    struct Spare {
        std::mutex lock;
        std::vector<std::unique_ptr<uint8_t[]>> blocks;
    };
    size_t bytes;
    std::shared_ptr<Spare> spare;
};
