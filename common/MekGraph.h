// A directed graph of owned nodes and edges. Edges keep the order in which
// they were made, which is the order a node's successors are visited in;
// hooks on the nodes let a subclass follow every edge that comes and goes.
#pragma once

#include <vector>

#include "common/MekObjects.h"

namespace tavo {

class TGGraphNode;
class TGCustomGraph;

class TGGraphEdge : public TPersistent {
  TAVO_CLASS(TGGraphEdge, TPersistent)
 public:
  TGGraphEdge(TGGraphNode* From, TGGraphNode* To) : FFromNode(From), FToNode(To) {}
  TGGraphNode* FromNode() const { return FFromNode; }
  TGGraphNode* ToNode() const { return FToNode; }
  // One integer of payload, kept by a subclass.
  virtual int ReadData() const { return 0; }
  virtual void WriteData(int /*Value*/) {}

 private:
  TGGraphNode* FFromNode;
  TGGraphNode* FToNode;
};

class TGGraphNode : public TPersistent {
  TAVO_CLASS(TGGraphNode, TPersistent)
 public:
  TGGraphNode() = default;
  // Removes every edge, in and out, telling the neighbours, and leaves the
  // graph.
  ~TGGraphNode() override;
  TGGraphNode(const TGGraphNode&) = delete;
  TGGraphNode& operator=(const TGGraphNode&) = delete;

  TGCustomGraph* GetGraph() const { return FGraph; }
  // The graph owns the node from here on.
  void SetGraph(TGCustomGraph* Graph);
  const String& GetName() const { return FName; }
  void SetName(const String& Value) { FName = Value; }

  // A new edge to To, after the node's other edges.
  TGGraphEdge* AddEdge(TGGraphNode* To);
  int GetEdgeCount() const { return int(FEdges.size()); }
  TGGraphEdge* GetEdge(int Index) const { return FEdges[size_t(Index)]; }
  const std::vector<TGGraphEdge*>& Edges() const { return FEdges; }
  int GetOutDegree() const { return int(FEdges.size()); }
  // Frees the edge; the others keep their order.
  void RemoveEdge(TGGraphEdge* Edge);
  void RemoveEdge(int Index) { RemoveEdge(GetEdge(Index)); }
  // Every outgoing edge, through RemoveEdge.
  void Clear();
  // Every edge in and out, freed without the hooks.
  void FastClear();
  void BeginUpdate() { ++FUpdateCount; }
  void EndUpdate() {
    if (FUpdateCount > 0) --FUpdateCount;
  }
  int GetUpdateCount() const { return FUpdateCount; }

  virtual TGGraphEdge* NewEdge(TGGraphNode* From, TGGraphNode* To);
  // On the target: before the edge joins its incoming edges, and after it
  // has left them.
  virtual void AddingEdgeFrom(TGGraphEdge* /*Edge*/) {}
  virtual void RemovingEdgeFrom(TGGraphEdge* /*Edge*/) {}
  // On the source: before the edge joins its outgoing edges, and after it
  // has left them.
  virtual void AddingEdgeTo(TGGraphEdge* /*Edge*/) {}
  virtual void RemovingEdgeTo(TGGraphEdge* /*Edge*/) {}

 protected:
  // Every node knows its incoming edges, so that it can leave cleanly;
  // the linked node shows them.
  std::vector<TGGraphEdge*> FInEdges;

 private:
  friend class TGCustomGraph;
  // Drops the edge from both ends and frees it; Hooks says whether the
  // nodes are told.
  static void Unlink(TGGraphEdge* Edge, bool Hooks);

  friend class TGGraphNodes;
  TGCustomGraph* FGraph = nullptr;
  String FName;
  std::vector<TGGraphEdge*> FEdges;
  int FUpdateCount = 0;
  // Set when the graph's list let go of the node before freeing it; the
  // node keeps its graph through its destructor.
  bool FLeftList = false;
};

// A node that shows its incoming edges.
class TGLinkedGraphNode : public TGGraphNode {
  TAVO_CLASS(TGLinkedGraphNode, TGGraphNode)
 public:
  TGLinkedGraphNode() = default;
  int GetInDegree() const { return int(FInEdges.size()); }
  TGGraphEdge* GetInEdge(int Index) const { return FInEdges[size_t(Index)]; }
};

// A list of nodes that owns them, or not.
class TGGraphNodes {
 public:
  explicit TGGraphNodes(bool OwnsObjects = true) : FOwnsObjects(OwnsObjects) {}
  ~TGGraphNodes() { Clear(); }
  TGGraphNodes(const TGGraphNodes&) = delete;
  TGGraphNodes& operator=(const TGGraphNodes&) = delete;

  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }
  int Count() const { return int(FItems.size()); }
  TGGraphNode* Get(int Index) const { return FItems[size_t(Index)]; }
  TGGraphNode* operator[](int Index) const { return Get(Index); }
  int Add(TGGraphNode* Node);
  void Insert(int Index, TGGraphNode* Node);
  int IndexOf(const TGGraphNode* Node) const;
  // Takes the node out, freeing it when the list owns it; gives its index.
  int Remove(TGGraphNode* Node);
  // Takes the node out without freeing it.
  TGGraphNode* Extract(TGGraphNode* Node);
  void Delete(int Index);
  void Clear();
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

 private:
  std::vector<TGGraphNode*> FItems;
  bool FOwnsObjects;
};

class TGCustomGraph : public TComponent {
  TAVO_CLASS(TGCustomGraph, TComponent)
 public:
  explicit TGCustomGraph(TComponent* Owner = nullptr);
  ~TGCustomGraph() override;

  const TClass* GetNodeClass() const { return FNodeClass; }
  void SetNodeClass(const TClass* Value) { FNodeClass = Value; }
  bool GetDirected() const { return FDirected; }
  void SetDirected(bool Value) { FDirected = Value; }
  int GetNodeCount() const { return FNodes.Count(); }
  TGGraphNode* GetNode(int Index) const { return FNodes.Get(Index); }
  int IndexOfNode(const TGGraphNode* Node) const { return FNodes.IndexOf(Node); }

  // A node of the node class, added to the graph.
  virtual TGGraphNode* NewNode();
  // The graph takes ownership.
  virtual void AddNode(TGGraphNode* Node);
  // Frees the node, and its edges with it.
  virtual void RemoveNode(TGGraphNode* Node);
  // Takes the node out without freeing it; its edges stay.
  virtual void Extract(TGGraphNode* Node);
  // Frees every node, the newest first.
  virtual void Clear();

 private:
  friend class TGGraphNode;
  TGGraphNodes FNodes;
  const TClass* FNodeClass;
  bool FDirected = true;
};

class TGGraph : public TGCustomGraph {
  TAVO_CLASS(TGGraph, TGCustomGraph)
 public:
  using TGCustomGraph::TGCustomGraph;
};

}  // namespace tavo
