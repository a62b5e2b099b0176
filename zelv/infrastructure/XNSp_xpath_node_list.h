#pragma once

#include <vector>

class TiXmlNode;

namespace TinyXPath {

/// Clears aNodes and fills it with the nodes that an XPath expression gives, in document order and
/// each once; it stays empty if the expression has no result, is none, gives no nodes, or exceeds a
/// limit (see XPathGate). Holds no state; any thread may call.
///
/// For an attribute the list holds a new text node with the attribute's value. Such nodes have no
/// parent and belong to the caller, who gives them back by XNSp_free_attribute_nodes(); all others
/// stay with their tree.
///
/// @param aContext  a node of a document, or a document.
void XNSp_xpath_node_list(std::vector<TiXmlNode*>* aNodes, TiXmlNode const* aContext,
                          char const* aXPath);

/// Deletes the text nodes in a list of XNSp_xpath_node_list() that stand for attributes, and clears
/// the list. REQUIRES: none of its nodes has been deleted since.
void XNSp_free_attribute_nodes(std::vector<TiXmlNode*>* aNodes);

}  // namespace TinyXPath
