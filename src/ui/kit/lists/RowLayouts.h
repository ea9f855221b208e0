#pragma once

#include <QCache>

#include <algorithm>
#include <memory>

namespace korvex::ui {

/// The layouts of the rows that were drawn last, some screens full of them, and no others: fewer
/// where they are large. A `Layout` has a `width()` that it was made for and a `cost()`, which is 1
/// for an ordinary row and more for one that takes more memory.
template <typename Layout>
class RowLayouts {
public:
    /// The layout of what `subject` points to, made by `make` when none is kept for this width.
    /// `make` is given the layout of the same for another width, if one is kept, of which it may
    /// use what no width changes. Valid until the next call of any function of this class.
    template <typename Make>
    const Layout& at(const void* subject, int width, Make&& make) {
        if (const auto* const known = m_kept.object(subject); known && known->width() == width) {
            return *known;
        }
        std::unique_ptr<Layout> made = make(std::unique_ptr<Layout>(m_kept.take(subject)));
        const auto cost = std::min(made->cost(), kKept);
        auto* const kept = made.release();
        m_kept.insert(subject, kept, cost); // takes it over
        return *kept;
    }
    void forget(const void* subject) { m_kept.remove(subject); }
    void forgetAll() { m_kept.clear(); }

private:
    static constexpr int kKept = 300;

    QCache<const void*, Layout> m_kept{kKept};
};

} // namespace korvex::ui
