// What the plain edition's configuration and print parameters say. Written by whoever sets a job up, while no stage
// runs; read by the contract's accessors.
//
// The library cannot include this header: it does not lie below the folder of the contract's headers.
#pragma once

#include "Platform/BandData/BandData.h"
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/PrintParam/PrintParamGlobal.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>

struct SPlainSetup
{
    // The options.
    std::int32_t dataMapStyle = 6;
    std::int32_t dataPushStyle = 2;
    std::int32_t printerSupportBits = 1;
    int printerDataWidth = 16;

    int lineGeneratorCount = 1;

    // The carriage.
    std::list<SCartUnitInfo> units;
    SCartHeads heads;

    // The group of the current pattern layout: position by unit id.
    bool bHasGroup = false;
    std::map<int, std::int32_t> groupPositions;

    // The print parameters.
    SRipJobInfo jobInfo;
    SRipJobInfo jobInfo_CurPrint;
    int jobWidth = 0;
    std::int32_t dotSizeMode = 0;
    int alignByteCountPerLine = 1;
    SPlainMask mask;
    SInkStripeParam_Pixel inkStripes;
    std::map<int, std::shared_ptr<const CBandData>> inkStripeColors; // by unit id
    std::map<int, SPlainHorizon> horizons;                           // by unit id
    int xMaxOffset_Right2Left = 0;
    int xMaxOffset_Left2Right = 0;
};

// The process's one and only.
SPlainSetup& PlainSetup_Get();
