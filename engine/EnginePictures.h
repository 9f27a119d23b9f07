// Pictures of what the engine has built, as text in the dot language of
// Graphviz: the Rete network of a module, and the agendas with the focus
// stack. The library only writes the text; a host renders it with dot.
// Nodes are named by the order of a walk, never by address, so that one
// network always gives the same text.
#pragma once

#include <unordered_map>
#include <vector>

#include "common/MekStrings.h"

namespace tavo {

class TInferenceEngine;
class TReteNetwork;
class TReteNode;
class TRule;

// A dot quoted string whose lines are Lines: quotes and backslashes
// escaped, a line break of the text a line break of the label, other
// control characters shown by their codes.
String DotLabel(const std::vector<String>& Lines);

// The nodes of a network and their edges. Alpha nodes are ellipses (the
// roots, which test the template, bold), joins boxes, negated joins dashed
// boxes headed "not" (the bare join that a double negation adds on top of
// one is headed "exists"), test elements hexagons and terminals double
// octagons with their rules' names. A node that several rules use is drawn
// once, with an edge to each successor, and says by how many rules.
class TNetworkPicture {
 public:
  // Rules: the rules of the network's module, in their order; they name
  // the variables in the tests and tell which nodes are shared. Title
  // heads the picture.
  TNetworkPicture(const TReteNetwork& Network, std::vector<TRule*> Rules, String Title);
  String ToString() const;

 private:
  enum TNodeKind { nkAlpha, nkJoin, nkNot, nkExists, nkTest, nkRule, nkOther };
  TNodeKind KindOf(const TReteNode* Node) const;
  std::vector<String> LabelOf(const TReteNode* Node, TNodeKind Kind) const;
  // The rules that hold Node, in rule order.
  const std::vector<TRule*>& HoldersOf(const TReteNode* Node) const;

  const TReteNetwork& FNetwork;
  std::vector<TRule*> FRules;
  String FTitle;
  // Every node, in the order of a depth-first walk from the roots in root
  // order, each node's edges in the order they run.
  std::vector<TReteNode*> FOrder;
  std::unordered_map<const TReteNode*, int> FIds;
  std::unordered_map<const TReteNode*, std::vector<TRule*>> FHolders;
};

// The focus stack, top first, and the agenda of every module, each
// activation in the order it fires with its rule, the salience it was
// placed with and its facts; an edge leads from each module on the focus
// stack to its agenda.
class TAgendaPicture {
 public:
  explicit TAgendaPicture(const TInferenceEngine& Engine) : FEngine(Engine) {}
  String ToString() const;

 private:
  const TInferenceEngine& FEngine;
};

}  // namespace tavo
