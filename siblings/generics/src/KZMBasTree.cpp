#include <generics/KZMBasTree.h>
#include <host/host_take.h>

#include <algorithm>

void* KZMBasTreeLinks::TakeNode(std::size_t size) { return host_heap::Take(size); }
void KZMBasTreeLinks::GiveBackNode(void* node) noexcept { host_heap::GiveBack(node); }

KZMBasTreeLinks::Link* KZMBasTreeLinks::Outermost(int side) const {
    Link* at = m_root;
    while (at && at->m_child[side]) at = at->m_child[side];
    return at;
}

KZMBasTreeLinks::Link* KZMBasTreeLinks::Neighbour(const Link* at, int side) {
    if (Link* below = at->m_child[side]) {
        while (below->m_child[1 - side]) below = below->m_child[1 - side];
        return below;
    }
    while (at->m_parent && at->m_parent->m_child[side] == at) at = at->m_parent;
    return at->m_parent;
}

void KZMBasTreeLinks::Attach(Link* fresh, Link* parent, int side) {
    fresh->m_parent = parent;
    (parent ? parent->m_child[side] : m_root) = fresh;
    ++m_size;
    Rebalance(parent);
}

void KZMBasTreeLinks::Detach(Link* at) {
    --m_size;
    if (!at->m_child[0] || !at->m_child[1]) {
        Replace(at, at->m_child[at->m_child[0] ? 0 : 1]);
        return Rebalance(at->m_parent);
    }
    // The next greater one takes its place; it has no lesser child.
    Link* const heir = Neighbour(at, 1);
    Link* const changed = heir->m_parent == at ? heir : heir->m_parent;
    if (changed != heir) {
        Replace(heir, heir->m_child[1]);
        heir->m_child[1] = at->m_child[1];
        heir->m_child[1]->m_parent = heir;
    }
    heir->m_child[0] = at->m_child[0];
    heir->m_child[0]->m_parent = heir;
    Replace(at, heir);
    Rebalance(changed);
}

void KZMBasTreeLinks::Replace(const Link* old, Link* by) {
    Link* const parent = old->m_parent;
    (!parent ? m_root : parent->m_child[parent->m_child[1] == old ? 1 : 0]) = by;
    if (by) by->m_parent = parent;
}

namespace {

template <class Link>
int Height(const Link* at) {
    return at ? at->m_height : 0;
}

template <class Link>
void UpdateHeight(Link* at) {
    at->m_height = 1 + std::max(Height(at->m_child[0]), Height(at->m_child[1]));
}

}  // namespace

// The child on `side` comes up; returns it.
KZMBasTreeLinks::Link* KZMBasTreeLinks::Rotate(Link* top, int side) {
    Link* const up = top->m_child[side];
    Link* const moved = up->m_child[1 - side];
    Replace(top, up);
    top->m_child[side] = moved;
    if (moved) moved->m_parent = top;
    up->m_child[1 - side] = top;
    top->m_parent = up;
    UpdateHeight(top);
    UpdateHeight(up);
    return up;
}

void KZMBasTreeLinks::Rebalance(Link* from) {
    for (Link* at = from; at; at = at->m_parent) {
        UpdateHeight(at);
        const int lean = Height(at->m_child[1]) - Height(at->m_child[0]);
        if (lean >= -1 && lean <= 1) continue;
        const int side = lean > 0 ? 1 : 0;
        Link* const child = at->m_child[side];
        if (Height(child->m_child[1 - side]) > Height(child->m_child[side]))
            Rotate(child, 1 - side);
        at = Rotate(at, side);
    }
}
