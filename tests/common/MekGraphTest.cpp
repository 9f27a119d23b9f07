#include "common/MekGraph.h"

#include <gtest/gtest.h>

#include <string>

namespace tavo {
namespace {

// Records every hook with the degrees seen at that moment.
std::u16string Log;

class TLoggedNode : public TGLinkedGraphNode {
  TAVO_CLASS(TLoggedNode, TGLinkedGraphNode)
 public:
  void AddingEdgeFrom(TGGraphEdge*) override { Log += u"+from" + IntToStr(GetInDegree()) + u" "; }
  void RemovingEdgeFrom(TGGraphEdge*) override { Log += u"-from" + IntToStr(GetInDegree()) + u" "; }
  void AddingEdgeTo(TGGraphEdge*) override { Log += u"+to" + IntToStr(GetOutDegree()) + u" "; }
  void RemovingEdgeTo(TGGraphEdge*) override { Log += u"-to" + IntToStr(GetOutDegree()) + u" "; }
};

TEST(MekGraphTest, EdgesKeepCreationOrderThroughRemovals) {
  TGGraph Graph;
  TGGraphNode* A = Graph.NewNode();
  TGGraphNode* B = Graph.NewNode();
  TGGraphNode* C = Graph.NewNode();
  TGGraphNode* D = Graph.NewNode();
  A->AddEdge(B);
  TGGraphEdge* ToC = A->AddEdge(C);
  A->AddEdge(D);
  A->RemoveEdge(ToC);
  ASSERT_EQ(A->GetEdgeCount(), 2);
  EXPECT_EQ(A->GetEdge(0)->ToNode(), B);
  EXPECT_EQ(A->GetEdge(1)->ToNode(), D);
  A->AddEdge(C);
  EXPECT_EQ(A->GetEdge(2)->ToNode(), C);
  EXPECT_EQ(A->GetOutDegree(), 3);
}

TEST(MekGraphTest, HooksRunOnBothEndsWithTheDegreesOfTheirMoment) {
  TGGraph Graph;
  Graph.SetNodeClass(&TLoggedNode::StaticClass());
  auto* From = static_cast<TLoggedNode*>(Graph.NewNode());
  auto* To = static_cast<TLoggedNode*>(Graph.NewNode());
  Log.clear();
  TGGraphEdge* Edge = From->AddEdge(To);
  EXPECT_EQ(Log, u"+to0 +from0 ");
  EXPECT_EQ(To->GetInDegree(), 1);
  EXPECT_EQ(To->GetInEdge(0), Edge);
  Log.clear();
  From->RemoveEdge(Edge);
  EXPECT_EQ(Log, u"-to0 -from0 ");
  Log.clear();
  From->AddEdge(To);
  From->FastClear();
  EXPECT_EQ(Log, u"+to0 +from0 ");
  EXPECT_EQ(To->GetInDegree(), 0);
}

TEST(MekGraphTest, FreeingANodeTellsItsLivingNeighboursAndLeavesTheGraph) {
  TGGraph Graph;
  Graph.SetNodeClass(&TLoggedNode::StaticClass());
  auto* Up = static_cast<TLoggedNode*>(Graph.NewNode());
  auto* Middle = static_cast<TLoggedNode*>(Graph.NewNode());
  auto* Down = static_cast<TLoggedNode*>(Graph.NewNode());
  Up->AddEdge(Middle);
  Middle->AddEdge(Down);
  Middle->AddEdge(Middle);
  Log.clear();
  Graph.RemoveNode(Middle);
  EXPECT_EQ(Log, u"-from0 -to0 ");
  EXPECT_EQ(Graph.GetNodeCount(), 2);
  EXPECT_EQ(Up->GetOutDegree(), 0);
  EXPECT_EQ(Down->GetInDegree(), 0);
}

TEST(MekGraphTest, ClearingAndFreeingGraphsWithEdgesLeaveNothingBehind) {
  auto Graph = std::make_unique<TGGraph>();
  TGGraphNode* Nodes[4];
  for (auto*& Node : Nodes) Node = Graph->NewNode();
  for (auto* From : Nodes)
    for (auto* To : Nodes) From->AddEdge(To);
  delete Nodes[2];
  EXPECT_EQ(Graph->GetNodeCount(), 3);
  EXPECT_EQ(Nodes[0]->GetOutDegree(), 3);
  Graph->Clear();
  EXPECT_EQ(Graph->GetNodeCount(), 0);
  Nodes[0] = Graph->NewNode();
  Nodes[1] = Graph->NewNode();
  Nodes[1]->AddEdge(Nodes[0]);
  Graph.reset();
}

TEST(MekGraphTest, ExtractKeepsTheNodeAliveWithItsEdges) {
  TGGraph Graph;
  TGGraphNode* A = Graph.NewNode();
  TGGraphNode* B = Graph.NewNode();
  A->AddEdge(B);
  Graph.Extract(B);
  EXPECT_EQ(Graph.GetNodeCount(), 1);
  EXPECT_EQ(B->GetGraph(), nullptr);
  EXPECT_EQ(A->GetEdge(0)->ToNode(), B);
  delete B;
  EXPECT_EQ(A->GetEdgeCount(), 0);
}

TEST(MekGraphTest, NodeListsOwnTheirNodesOnlyWhenAsked) {
  TGGraphNodes Owning;
  Owning.Add(new TGGraphNode());
  Owning.Add(new TGGraphNode());
  Owning.Delete(0);
  EXPECT_EQ(Owning.Count(), 1);
  TGGraphNode Kept;
  {
    TGGraphNodes Borrowing(false);
    Borrowing.Add(&Kept);
    EXPECT_EQ(Borrowing.IndexOf(&Kept), 0);
  }
  EXPECT_EQ(Kept.GetEdgeCount(), 0);
}

}  // namespace
}  // namespace tavo
