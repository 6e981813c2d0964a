// The ink of a page for the model: the separations of an opened page, swath by swath, and the stripes' colours, read
// without a line of what turns swaths into bands. Memory holds one swath of every separation. One thread at a time
// while a swath is read; any number while one is looked at.
#pragma once

#include "Host/Input/SeparationReader.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageModel.h"

#include <map>
#include <memory>
#include <vector>

class CPageInk : public CModelInk
{
public:
    // Opens the page's separations and stripe files anew; `page` must be whole and outlive this. Throws CInputError.
    explicit CPageInk(const CJobPage& page);

    // Makes `swath` of `page` the one that can be asked for. Going on to a later swath of the page reads on; an earlier
    // one begins again. Throws CInputError for damaged pixels.
    void Swath_Read(int swath, int page = 0);

    // Of the swath that was read last; rows below the page have none.
    int Page_Get(const SBoardUnitInfo& unit, int row, int column) const override;
    int Stripe_Get(const SBoardUnitInfo& unit, int nozzle, int stripePosition) const override;
    bool IsBlank(const SBoardUnitInfo& unit, int swath) const override;
    bool HasPage(const SBoardUnitInfo& unit) const override;

private:
    // Rows of packed pixels.
    struct SRows
    {
        int m_bits = 1; // of a pixel
        std::size_t m_rowBytes = 0;
        std::vector<unsigned char> m_bytes;

        int Get(int row, int column) const; // 0 where nothing is kept
    };
    struct SUnitInk
    {
        const SJobUnit* m_pUnit = nullptr;
        const SPageUnit* m_pPages = nullptr;         // of the opened page; null: no separation
        std::unique_ptr<CSeparationReader> m_reader; // of the page; null: it is blank for the unit, or not begun
        SRows m_rows;                                // of the swath
        SRows m_stripe;                              // scan positions, nozzles across
        int m_solid = -1;                            // the pixel of a solid stripe; -1: m_stripe
        int m_nextRow = 0;                           // of the separation
        bool m_bBlank = true;
    };

    void Stripe_Open(SUnitInk& ink) const;
    void Rows_Read(SUnitInk& ink);
    const SUnitInk& Unit_Get(int unitId) const { return m_units.at(unitId); }

    const CJobPage& m_job;
    int m_page = -1;
    int m_swath = -1;
    std::map<int, SUnitInk> m_units; // by id
};
