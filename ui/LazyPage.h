#pragma once

#include <QLayout>
#include <QSharedPointer>
#include <QWidget>

#include <functional>

// A page of the main window made the first time something needs it rather than with the window: a start from the
// offline cache shows the connect page only, and most users never open the account or purchase pages.
template <typename Page>
class LazyPage
{
public:
    // The page is to be made as a hidden child of `parent`, in its layout, and handed to `connectPage` then. (The
    // page is made, and so deleted, where its type is complete: that is what the shared pointer is for.)
    template <typename Connect>
    void makeIn(QWidget* parent, Connect connectPage)
    {
        m_make = [parent, connectPage] {
            QSharedPointer<Page> page(new Page(parent));
            parent->layout()->addWidget(page.data());
            page->hide();
            connectPage(page.data());
            return page;
        };
    }
    // The page, made now if it has not been.
    Page* get() const
    {
        if (!m_page)
            m_page = m_make();
        return m_page.data();
    }
    Page* operator->() const { return get(); }
    // The page if it has been made, else null: a page never made has nothing to hide and is not shown.
    Page* made() const { return m_page.data(); }

private:
    std::function<QSharedPointer<Page>()> m_make;
    mutable QSharedPointer<Page> m_page;
};
