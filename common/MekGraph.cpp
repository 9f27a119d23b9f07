#include "common/MekGraph.h"

#include <algorithm>

#include "common/MekExceptions.h"

namespace tavo {

namespace {

void Erase(std::vector<TGGraphEdge*>& Edges, TGGraphEdge* Edge) {
  auto Found = std::find(Edges.begin(), Edges.end(), Edge);
  if (Found != Edges.end()) Edges.erase(Found);
}

}  // namespace

// TGGraphNode

TGGraphNode::~TGGraphNode() {
  // The neighbours are alive and hear of the edges going; this node is
  // past its hooks.
  while (!FEdges.empty()) {
    TGGraphEdge* Edge = FEdges.back();
    FEdges.pop_back();
    TGGraphNode* To = Edge->ToNode();
    Erase(To->FInEdges, Edge);
    if (To != this) To->RemovingEdgeFrom(Edge);
    delete Edge;
  }
  while (!FInEdges.empty()) {
    TGGraphEdge* Edge = FInEdges.back();
    FInEdges.pop_back();
    TGGraphNode* From = Edge->FromNode();
    Erase(From->FEdges, Edge);
    From->RemovingEdgeTo(Edge);
    delete Edge;
  }
  if (FGraph && !FLeftList) FGraph->FNodes.Extract(this);
}

void TGGraphNode::SetGraph(TGCustomGraph* Graph) {
  if (Graph == FGraph) return;
  if (FGraph) FGraph->Extract(this);
  if (Graph) Graph->AddNode(this);
}

TGGraphEdge* TGGraphNode::NewEdge(TGGraphNode* From, TGGraphNode* To) { return new TGGraphEdge(From, To); }

TGGraphEdge* TGGraphNode::AddEdge(TGGraphNode* To) {
  if (!To) throw EMekException(u"An edge needs a target node");
  TGGraphEdge* Edge = NewEdge(this, To);
  try {
    AddingEdgeTo(Edge);
    To->AddingEdgeFrom(Edge);
  } catch (...) {
    delete Edge;
    throw;
  }
  FEdges.push_back(Edge);
  To->FInEdges.push_back(Edge);
  return Edge;
}

void TGGraphNode::Unlink(TGGraphEdge* Edge, bool Hooks) {
  TGGraphNode* From = Edge->FromNode();
  TGGraphNode* To = Edge->ToNode();
  Erase(From->FEdges, Edge);
  Erase(To->FInEdges, Edge);
  if (Hooks) {
    From->RemovingEdgeTo(Edge);
    To->RemovingEdgeFrom(Edge);
  }
  delete Edge;
}

void TGGraphNode::RemoveEdge(TGGraphEdge* Edge) {
  if (!Edge || Edge->FromNode() != this) return;
  if (std::find(FEdges.begin(), FEdges.end(), Edge) == FEdges.end()) return;
  Unlink(Edge, true);
}

void TGGraphNode::Clear() {
  while (!FEdges.empty()) RemoveEdge(FEdges.back());
}

void TGGraphNode::FastClear() {
  while (!FEdges.empty()) Unlink(FEdges.back(), false);
  while (!FInEdges.empty()) Unlink(FInEdges.back(), false);
}

// TGGraphNodes

int TGGraphNodes::Add(TGGraphNode* Node) {
  FItems.push_back(Node);
  return Count() - 1;
}

void TGGraphNodes::Insert(int Index, TGGraphNode* Node) { FItems.insert(FItems.begin() + Index, Node); }

int TGGraphNodes::IndexOf(const TGGraphNode* Node) const {
  auto Found = std::find(FItems.begin(), FItems.end(), Node);
  return Found == FItems.end() ? -1 : int(Found - FItems.begin());
}

int TGGraphNodes::Remove(TGGraphNode* Node) {
  int Index = IndexOf(Node);
  if (Index >= 0) Delete(Index);
  return Index;
}

TGGraphNode* TGGraphNodes::Extract(TGGraphNode* Node) {
  int Index = IndexOf(Node);
  if (Index < 0) return nullptr;
  FItems.erase(FItems.begin() + Index);
  return Node;
}

void TGGraphNodes::Delete(int Index) {
  TGGraphNode* Node = FItems[size_t(Index)];
  FItems.erase(FItems.begin() + Index);
  if (FOwnsObjects) {
    Node->FLeftList = true;
    delete Node;
  }
}

void TGGraphNodes::Clear() {
  while (!FItems.empty()) Delete(Count() - 1);
}

// TGCustomGraph

TGCustomGraph::TGCustomGraph(TComponent* Owner)
    : TComponent(Owner), FNodes(true), FNodeClass(&TGGraphNode::StaticClass()) {}

TGCustomGraph::~TGCustomGraph() { TGCustomGraph::Clear(); }

TGGraphNode* TGCustomGraph::NewNode() {
  TObject* Object = FNodeClass && FNodeClass->Create ? FNodeClass->Create() : nullptr;
  auto* Node = dynamic_cast<TGGraphNode*>(Object);
  if (!Node) {
    delete Object;
    throw EMekException(u"The node class of the graph cannot make nodes");
  }
  AddNode(Node);
  return Node;
}

void TGCustomGraph::AddNode(TGGraphNode* Node) {
  if (!Node || Node->FGraph == this) return;
  if (Node->FGraph) Node->FGraph->Extract(Node);
  FNodes.Add(Node);
  Node->FGraph = this;
}

void TGCustomGraph::RemoveNode(TGGraphNode* Node) {
  if (!Node || Node->FGraph != this) return;
  FNodes.Extract(Node);
  Node->FLeftList = true;
  delete Node;
}

void TGCustomGraph::Extract(TGGraphNode* Node) {
  if (!Node || Node->FGraph != this) return;
  FNodes.Extract(Node);
  Node->FGraph = nullptr;
}

void TGCustomGraph::Clear() { FNodes.Clear(); }

}  // namespace tavo
