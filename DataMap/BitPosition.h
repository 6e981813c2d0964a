// Bits as the boards take them. Position q is bit 7 - (q mod 8) of byte q / 8, so that position 0 is the most
// significant bit of the first byte; a drop of one of three sizes is a code of two bits.
//
// The table builders of the map styles place every bit through here, on the thread that initialises the map. Nothing
// here checks a bound.
#pragma once

// The codes of the drop sizes, the bit of the lower position on top.
constexpr int codeSmall = 0b01;
constexpr int codeMiddle = 0b10;
constexpr int codeBig = 0b11;

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
