// Reads and replaces the data-path options under one lock.
#include "Platform/GlobalConfig/DPOption.h"

void CSerialize_DPOption::Set(const SDPOption& option)
{
    const std::lock_guard guard(m_lock);
    m_option = option;
}

EDataMapStyle CSerialize_DPOption::DataMapStyle_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_option.m_dataMapStyle;
}

EDataPushStyle CSerialize_DPOption::DataPushStyle_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_option.m_dataPushStyle;
}

EPrinterSupportBits CSerialize_DPOption::PrinterSupportBits_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_option.m_printerSupportBits;
}

int CSerialize_DPOption::PrinterDataWidth_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_option.m_printerDataWidth;
}

CSerialize_DPOption* GC_DPOption()
{
    static CSerialize_DPOption option;
    return &option;
}
