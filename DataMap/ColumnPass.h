// All units of a board line with a byte column per unit in one pass.
//
// The maps with byte columns put their lines' columns in here and have them interleaved into the board line, on
// whatever thread maps it. Columns are stored, not ORed, and the bytes of absent ones are left alone.
#pragma once

class CColumnPass
{
public:
    static constexpr int columnCountMax = 256;

    // `columnCount`: 0 to columnCountMax. To be cleared before its first use.
    explicit CColumnPass(int columnCount) : m_columnCount(columnCount) {}

    // Forgets all columns.
    void Clear();

    bool HasColumn(int column) const { return m_columns[column] != nullptr; }
    void Column_Set(int column, const unsigned char* bytes) { m_columns[column] = bytes; }

    // dst[i x columns + c] = byte i of column c, for i below `byteCount`.
    void Columns_Store(int byteCount, unsigned char* dst) const;

    // The same for one column of `columnCount` alone.
    static void Column_Store(const unsigned char* src, int byteCount, unsigned char* dst, int columnCount);

private:
    int m_columnCount;
    const unsigned char* m_columns[columnCountMax];
};
