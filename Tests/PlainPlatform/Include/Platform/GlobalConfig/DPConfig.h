// The data path's run-time settings of this machine.
#pragma once

class CSerialize_DPConfig
{
public:
    int LineGeneratorCount_Of_DataMap_Get() const; // line-generator threads per board band
};

CSerialize_DPConfig* GC_DPConfig();
