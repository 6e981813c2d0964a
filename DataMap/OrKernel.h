// The OR loops: the one place where bytes are ORed into a board line.
//
// The maps and the stages call Or_Bytes for every source byte that they map, from any thread. Or_Bytes_Scalar is the
// definition; whatever Or_Bytes does to be fast, it leaves the bytes that the definition leaves, also when the two
// ranges overlap. Neither allocates, locks, logs or looks beyond its `count` bytes.
#pragma once

class COrKernel
{
public:
    // dst[i] |= src[i] for i = 0 .. count - 1, in this order. Nothing when `count` is 0 or less. The ranges may
    // overlap: a byte that was written is then read again with its new value, as the order says.
    static void Or_Bytes_Scalar(unsigned char* dst, const unsigned char* src, int count);

    // The same bytes, faster.
    static void Or_Bytes(unsigned char* dst, const unsigned char* src, int count);
};
