// The data maps as they are published, written down by hand: what a client has that was never given this repository's
// headers. No member and no virtual operation beside these.
//
// The classes are the library's own by name, so no file that includes this may see the headers of DataMap/.
#pragma once

#include "Compiler/KelCompiler.h"

#include <cstdint>

enum class EDotSizeMode : std::int32_t;

#pragma pack(push, 4)
struct SSrcBandDataParam
{
    std::int32_t m_unitIndex;
    std::int32_t m_unitDirection;
    std::int32_t m_lineBitCount;
    void* m_customParam;
};
#pragma pack(pop)

class KEL_IMPORT CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_Base();
    CPrintUnitDataMap_Base(const CPrintUnitDataMap_Base& other);
    CPrintUnitDataMap_Base& operator=(const CPrintUnitDataMap_Base& other);

    virtual ~CPrintUnitDataMap_Base();
    virtual bool Init(int srcBitCount, int dstBitCount, int dataFrameWidth);
    virtual int MapDataSizeOfByte() const;
    virtual const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const;
    virtual bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                              int dstByteCount) const;
    virtual int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const;
    virtual void* CustomParam_Create() const;
    virtual void CustomParam_Release(void* customParam) const;

protected:
    virtual void Init_MapDataSizeOfByte();

public:
    int SrcBitCount() const;
    int DstBitCount() const;
    int DataFrameWidth() const;
    const unsigned char* AllMapData_Get() const;

protected:
    std::int32_t m_mapDataSizeOfByte;
    std::int32_t m_unitMapDataSize;
    unsigned char* m_mapData;
    std::int32_t m_mapDataSize;
    std::int32_t m_srcBitCount;
    std::int32_t m_dstBitCount;
    std::int32_t m_srcBitMask;
    std::int32_t m_dataFrameWidth;
    std::int32_t m_unitCount;
};
static_assert(sizeof(CPrintUnitDataMap_Base) == 40 + sizeof(void*));

class KEL_IMPORT CPrintUnitDataMap_5 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_5();
    CPrintUnitDataMap_5(const CPrintUnitDataMap_5& other);
    CPrintUnitDataMap_5& operator=(const CPrintUnitDataMap_5& other);
    ~CPrintUnitDataMap_5() override;

    using CPrintUnitDataMap_Base::Init;
    virtual bool Init(int srcBitCount, int dataFrameWidth);
};

class KEL_IMPORT CPrintUnitDataMap_03 : public CPrintUnitDataMap_5
{
public:
    CPrintUnitDataMap_03();
    CPrintUnitDataMap_03(const CPrintUnitDataMap_03& other);
    CPrintUnitDataMap_03& operator=(const CPrintUnitDataMap_03& other);
    ~CPrintUnitDataMap_03() override;

    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;
};

class KEL_IMPORT CPrintUnitDataMap_03_01 : public CPrintUnitDataMap_5
{
public:
    CPrintUnitDataMap_03_01();
    CPrintUnitDataMap_03_01(const CPrintUnitDataMap_03_01& other);
    CPrintUnitDataMap_03_01& operator=(const CPrintUnitDataMap_03_01& other);
    ~CPrintUnitDataMap_03_01() override;

    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;
    void* CustomParam_Create() const override;
    void CustomParam_Release(void* customParam) const override;
    using CPrintUnitDataMap_Base::Init;
    bool Init(int srcBitCount, int dataFrameWidth) override;

protected:
    std::int32_t m_bitMode;
};

class KEL_IMPORT CPrintUnitDataMap_7 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_7();
    CPrintUnitDataMap_7(const CPrintUnitDataMap_7& other);
    CPrintUnitDataMap_7& operator=(const CPrintUnitDataMap_7& other);
    ~CPrintUnitDataMap_7() override;

    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    int SrcPixelCount_2_BoardBitCount(int srcPixelCount) const override;
    using CPrintUnitDataMap_Base::Init;
    virtual bool Init(EDotSizeMode dotSizeMode, int dataFrameWidth);

protected:
    std::int32_t m_dotSizeMode;
};

class KEL_IMPORT CPrintUnitDataMap_8 : public CPrintUnitDataMap_Base
{
public:
    CPrintUnitDataMap_8();
    CPrintUnitDataMap_8(const CPrintUnitDataMap_8& other);
    CPrintUnitDataMap_8& operator=(const CPrintUnitDataMap_8& other);
    ~CPrintUnitDataMap_8() override;

    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override;
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override;
    using CPrintUnitDataMap_Base::Init;
    virtual bool Init(int dataFrameWidth);
};
