#include "tools/lumenveil/buffer_pool.h"

#include <new>

BufferPool::BufferPool(size_t size) : bytes(size), spare(std::make_shared<Spare>()) {}

std::shared_ptr<uint8_t> BufferPool::Take()
{
    std::unique_ptr<uint8_t[]> block;
    {
        std::lock_guard<std::mutex> hold(spare->lock);
        if (!spare->blocks.empty()) {
            block = std::move(spare->blocks.back());
            spare->blocks.pop_back();
        }
    }
    if (!block)
        block.reset(new (std::nothrow) uint8_t[bytes]);
    if (!block)
        return nullptr;
    std::weak_ptr<Spare> home = spare;
    return std::shared_ptr<uint8_t>(block.release(), [home](uint8_t* returned) {
        std::unique_ptr<uint8_t[]> owned(returned);
        if (std::shared_ptr<Spare> pool = home.lock()) {
            std::lock_guard<std::mutex> hold(pool->lock);
            pool->blocks.push_back(std::move(owned));
        }
    });
}
