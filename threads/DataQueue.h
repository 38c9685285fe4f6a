// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/**
 * A first-in-first-out queue of bytes, 2^31 - 1 of them at most: a chain of chunks that the queue owns. A chunk is freed at
 * the moment its last byte is read. Not locked: one thread at a time.
 */
class DataQueue {
  public:
    DataQueue() = default;
    ~DataQueue();

    DataQueue(const DataQueue&) = delete;
    DataQueue& operator=(const DataQueue&) = delete;

    /**
     * Appends a buffer of `length` bytes that the caller made with new[], and takes it over. False, and the
     * caller keeps the buffer, when it is null, `length` is below 1 or no memory is left.
     */
    bool Write(char* data, long length);

    /** Appends a copy of `length` bytes. False when `data` is null, `length` is below 1 or no memory is left.
     */
    bool WriteCopy(const char* data, long length);

    /**
     * Moves exactly `length` bytes to `out`. False, and nothing changes, when fewer are queued, `out` is null
     * or `length` is below 1.
     */
    bool Read(char* out, long length);

    /** Bytes not read yet. */
    long Size() const { return m_Size; }

    /** Drops everything. */
    void Flush();

  private:
    struct Chunk {
        char* data;
        long length;
        Chunk* next;
    };

    void DropHead();

    Chunk* m_Head = nullptr;
    Chunk* m_Tail = nullptr;
    long m_Size = 0;
    long m_ReadOffset = 0;  ///< bytes of the head chunk that are read already
};
