// The interactive-tool base: pen events drive an interaction on a tool that
// begins it on the left button, links set the flags, layer requests are
// recorded, and property calls go to the linked operator.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hostsdk/CDSInteractiveTool.h"

namespace {

// Begins on a left pen down and ends on a left pen up, as a viewer tool does;
// writes down each interaction call.
class RecordingTool : public CDSInteractiveTool {
public:
    HRESULT OnPenDown(const tagVWPENEVENT* event) override
    {
        if (event && event->button == VW_PEN_BUTTON_LEFT)
            return OnBeginInteraction(event);
        return CDSInteractiveTool::OnPenDown(event);
    }
    HRESULT OnPenUp(const tagVWPENEVENT* event) override
    {
        if (event && event->button == VW_PEN_BUTTON_LEFT)
            return TerminateInteraction();
        return CDSInteractiveTool::OnPenUp(event);
    }
    HRESULT OnBeginInteraction(const tagVWPENEVENT* event) override
    {
        const HRESULT base = CDSInteractiveTool::OnBeginInteraction(event);
        if (FAILED(base))
            return base;
        log.push_back("begin " + at(event));
        return S_OK;
    }
    HRESULT OnDoInteraction(const tagVWPENEVENT* event) override
    {
        log.push_back("do " + at(event));
        return doResult;
    }
    HRESULT OnEndInteraction() override
    {
        log.push_back("end");
        return endResult;
    }

    std::vector<std::string> log;
    HRESULT doResult = S_OK;
    HRESULT endResult = S_OK;

private:
    static std::string at(const tagVWPENEVENT* e) { return std::to_string(int(e->x)) + "," + std::to_string(int(e->y)); }
};

tagVWPENEVENT pen(int32_t button, double x, double y) { return {button, x, y, 1.0}; }

constexpr int32_t RIGHT_BUTTON = 2;

TEST(InteractiveTool, PenDownDragUpDrivesOneInteraction)
{
    RecordingTool tool;
    const tagVWPENEVENT before = pen(VW_PEN_BUTTON_LEFT, 1, 1), down = pen(VW_PEN_BUTTON_LEFT, 2, 3),
                        move1 = pen(VW_PEN_BUTTON_LEFT, 4, 5), move2 = pen(VW_PEN_BUTTON_LEFT, 6, 7),
                        up = pen(VW_PEN_BUTTON_LEFT, 8, 9), after = pen(VW_PEN_BUTTON_LEFT, 10, 11);
    EXPECT_EQ(tool.OnPenMove(&before), S_OK);
    EXPECT_EQ(tool.OnPenDown(&down), S_OK);
    EXPECT_TRUE(tool.IsInteracting());
    EXPECT_EQ(tool.OnPenMove(&move1), S_OK);
    EXPECT_EQ(tool.OnPenMove(&move2), S_OK);
    EXPECT_EQ(tool.OnPenUp(&up), S_OK);
    EXPECT_FALSE(tool.IsInteracting());
    EXPECT_EQ(tool.OnPenMove(&after), S_OK);
    const std::vector<std::string> expected = {"begin 2,3", "do 4,5", "do 6,7", "end"};
    EXPECT_EQ(tool.log, expected);
}

TEST(InteractiveTool, OtherButtonsBeginNothing)
{
    RecordingTool tool;
    const tagVWPENEVENT down = pen(RIGHT_BUTTON, 2, 3), move = pen(RIGHT_BUTTON, 4, 5);
    EXPECT_EQ(tool.OnPenDown(&down), S_OK);
    EXPECT_EQ(tool.OnPenMove(&move), S_OK);
    EXPECT_EQ(tool.OnPenUp(&move), S_OK);
    EXPECT_TRUE(tool.log.empty());
}

TEST(InteractiveTool, TerminateEndsOnceAndResultsPassThrough)
{
    RecordingTool tool;
    EXPECT_EQ(tool.TerminateInteraction(), S_FALSE) << "no interaction, no end";
    const tagVWPENEVENT down = pen(VW_PEN_BUTTON_LEFT, 0, 0);
    tool.OnPenDown(&down);
    tool.doResult = E_UNEXPECTED;
    EXPECT_EQ(tool.OnPenMove(&down), E_UNEXPECTED);
    tool.endResult = E_FAIL;
    EXPECT_EQ(tool.TerminateInteraction(), E_FAIL);
    EXPECT_FALSE(tool.IsInteracting());
    EXPECT_EQ(tool.TerminateInteraction(), S_FALSE);
    const std::vector<std::string> expected = {"begin 0,0", "do 0,0", "end"};
    EXPECT_EQ(tool.log, expected);
    EXPECT_EQ(tool.OnPenMove(nullptr), E_POINTER);
    EXPECT_EQ(tool.OnBeginInteraction(nullptr), E_POINTER);
    EXPECT_FALSE(tool.IsInteracting());
}

// Answers reads with a fixed number and remembers the last write.
class NumberOperator : public IVWOperator {
public:
    HRESULT GetAnimatedProperty(const GUID&, VARIANT* value, void*, double) override
    {
        value->vt = VT_UI4;
        value->ulVal = 1234;
        return S_OK;
    }
    HRESULT SetAnimatedProperty(const GUID&, VARIANT* value, void*, int, double) override
    {
        written = value->dblVal;
        return S_OK;
    }
    double written = 0.0;
};

constexpr GUID SOME_PROPERTY = {0x11111111, 0x2222, 0x3333, {4, 4, 5, 5, 5, 5, 5, 5}};

TEST(InteractiveTool, LinksSetAndClearTheirFlags)
{
    CDSInteractiveTool tool;
    NumberOperator op;
    VWViewer viewer;
    EXPECT_EQ(tool.OnLinkToOperator(&op), S_OK);
    EXPECT_TRUE(tool.IsLinkedToOperator() && !tool.IsLinkedToViewer());
    EXPECT_EQ(tool.OnLinkToViewer(&viewer), S_OK);
    EXPECT_TRUE(tool.IsLinkedToViewer() && tool.Viewer() == &viewer && tool.Operator() == &op);
    tool.OnLinkToOperator(nullptr);
    EXPECT_TRUE(!tool.IsLinkedToOperator() && tool.IsLinkedToViewer());
    tool.OnLinkToViewer(nullptr);
    EXPECT_FALSE(tool.IsLinkedToViewer());
}

TEST(InteractiveTool, PropertyCallsGoToTheLinkedOperator)
{
    CDSInteractiveTool tool;
    NumberOperator op;
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(tool.GetAnimatedProperty(SOME_PROPERTY, &value, nullptr, -1.0), E_UNEXPECTED);
    tool.OnLinkToOperator(&op);
    EXPECT_EQ(tool.GetAnimatedProperty(SOME_PROPERTY, &value, nullptr, -1.0), S_OK);
    EXPECT_EQ(value.ulVal, 1234u);
    value.vt = VT_R8;
    value.dblVal = 0.25;
    EXPECT_EQ(tool.SetAnimatedProperty(SOME_PROPERTY, &value, nullptr, 1, -1.0), S_OK);
    EXPECT_EQ(op.written, 0.25);
}

TEST(InteractiveTool, InvalidateLayerIsRecorded)
{
    CDSInteractiveTool tool;
    const VWRECT area = {1, 2, 3, 4};
    EXPECT_EQ(tool.InvalidateLayer(2, nullptr), S_OK);
    EXPECT_EQ(tool.InvalidateLayer(1, &area), S_OK);
    const auto& calls = tool.Invalidations();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_TRUE(calls[0].layer == 2 && calls[0].whole);
    EXPECT_TRUE(calls[1].layer == 1 && !calls[1].whole && calls[1].area.height == 4);
    tool.ClearInvalidations();
    EXPECT_TRUE(tool.Invalidations().empty());
}

}  // namespace
