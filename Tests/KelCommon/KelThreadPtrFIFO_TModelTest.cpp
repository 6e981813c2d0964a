// The pointer FIFO against a model that cannot be wrong: a deque with a capacity.
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Tests/KelCommon/CountedElement.h"
#include "Tests/Support/LogCapture.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <deque>
#include <memory>
#include <vector>

namespace
{

enum class EOperation
{
    In,
    InNull,
    Out,
    Release
};

// A FIFO and its model; every step is done to both and compared.
class CComparison
{
public:
    explicit CComparison(int capacity) : m_capacity(static_cast<std::size_t>(capacity)), m_fifo(capacity) {}
    ~CComparison()
    {
        for (const auto* element : m_taken)
        {
            delete element;
        }
    }
    CComparison(const CComparison&) = delete;
    CComparison& operator=(const CComparison&) = delete;

    void Step(EOperation operation)
    {
        switch (operation)
        {
        case EOperation::In:
            return In(new SCountedElement);
        case EOperation::InNull:
            return In(nullptr);
        case EOperation::Out:
            return Out();
        case EOperation::Release:
            RC_ASSERT(m_fifo.ReleaseAllContent());
            m_model.clear();
        }
    }

    void Compare()
    {
        RC_ASSERT(m_fifo.HasDataEvent().Wait(0, 0) == !m_model.empty());
        RC_ASSERT(m_fifo.HasSpaceEvent().Wait(0, 0) == (m_model.size() < m_capacity));
        RC_ASSERT(static_cast<int>(m_capture.Records().size()) == m_refusedCount);
        std::size_t liveCount = m_taken.size();
        for (const auto* element : m_model)
        {
            liveCount += element != nullptr ? 1 : 0;
        }
        RC_ASSERT(SCountedElement::LiveCount() == static_cast<int>(liveCount));
    }

private:
    void In(SCountedElement* element)
    {
        const bool bRoom = m_model.size() < m_capacity;
        const bool bQueued = m_fifo.In(element);
        if (!bQueued)
        {
            delete element;
        }
        RC_ASSERT(bQueued == bRoom);
        if (bRoom)
        {
            m_model.push_back(element);
        }
        m_refusedCount += bRoom ? 0 : 1;
    }

    void Out()
    {
        SCountedElement untouched;
        SCountedElement* element = &untouched;
        RC_ASSERT(m_fifo.Out(element) == !m_model.empty());
        RC_ASSERT(element == (m_model.empty() ? &untouched : m_model.front()));
        if (!m_model.empty())
        {
            m_taken.push_back(element);
            m_model.pop_front();
        }
        while (!m_taken.empty() && m_taken.back() == nullptr)
        {
            m_taken.pop_back();
        }
    }

    CLogCapture m_capture;
    std::size_t m_capacity;
    CKelThreadPtrFIFO_T<SCountedElement> m_fifo;
    std::deque<SCountedElement*> m_model;
    std::vector<SCountedElement*> m_taken;
    int m_refusedCount = 0;
};

} // namespace

RC_GTEST_PROP(KelThreadPtrFIFO_TModel, AnySequenceOfOperationsBehavesLikeABoundedDeque, ())
{
    const int capacity = *rc::gen::inRange(1, 6);
    const auto operations = *rc::gen::container<std::vector<EOperation>>(rc::gen::weightedElement<EOperation>(
        {{8, EOperation::In}, {1, EOperation::InNull}, {7, EOperation::Out}, {1, EOperation::Release}}));
    CComparison comparison(capacity);
    for (const EOperation operation : operations)
    {
        comparison.Step(operation);
        comparison.Compare();
    }
}

TEST(KelThreadPtrFIFO_TModel, EveryComparisonCleansUp)
{
    EXPECT_EQ(SCountedElement::LiveCount(), 0);
}
