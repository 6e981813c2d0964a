// Bit positions as the boards count them: position q is bit 7 - (q mod 8) of byte q / 8, so that position 0 is the most
// significant bit of the first byte.
//
// The table builders of the map styles place every bit through here, on the thread that initialises the map. Nothing
// here checks a bound.
#pragma once

// The mask of bit position `position` (>= 0) within its byte.
constexpr unsigned char BitPosition_Mask(int position)
{
    return static_cast<unsigned char>(0x80U >> (position % 8));
}

// Sets bit position `position` (>= 0) of `bytes`; all other bits keep their value.
constexpr void BitPosition_Set(unsigned char* bytes, int position)
{
    bytes[position / 8] = static_cast<unsigned char>(bytes[position / 8] | BitPosition_Mask(position));
}
