#pragma once

// What the main window's tests share: Kestrin started in a temporary home,
// with its alerts and launches recorded.

#include "app/Profile.h"
#include "mainwindow/KestrinApplication.h"
#include "mainwindow/KestrinWindow.h"
#include "panes/DirListItem.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/MarkedList.h"
#include "platform/AlertRecorder.h"
#include "platform/Entry.h"
#include "platform/LaunchRecorder.h"
#include "support/TempHome.h"

#include <QApplication>
#include <QTest>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

inline bool WaitFor(const std::function<bool()> &condition, int timeoutMs = 15000)
{
    return QTest::qWaitFor(condition, timeoutMs);
}

class KestrinFixture : public ::testing::Test
{
protected:
    void TearDown() override
    {
        fKestrin.reset();
        // Copy windows delete themselves; give them the chance.
        QTest::qWait(0);
    }

    void Profile(const std::string &key, const std::string &value)
    {
        kestrin::SetProfileString("Kestrin", key, value, "Kestrin.pref");
    }
    std::string ProfileValue(const std::string &key)
    {
        std::string value;
        kestrin::GetProfileString("Kestrin", key, &value, "Kestrin.pref");
        return value;
    }
    std::string Home() const { return fHome.Home(); }

    // One pane on each folder, in order.
    void PanesOn(const std::vector<std::string> &folders)
    {
        Profile("NumPanes", std::to_string(folders.size()));
        for (size_t i = 0; i < folders.size(); i++)
            Profile("Pane" + std::to_string(i), folders[i]);
    }

    // Starts Kestrin and waits until every pane has listed its folder.
    kestrin::KestrinWindow &Start()
    {
        fKestrin = std::make_unique<kestrin::KestrinApplication>();
        kestrin::KestrinWindow &window = *fKestrin->Window();
        QApplication::setActiveWindow(&window);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        EXPECT_TRUE(WaitFor([&window] { return Idle(window); }));
        return window;
    }

    static bool Idle(const kestrin::KestrinWindow &window)
    {
        for (const kestrin::DirPane *pane : window.Panes()) {
            if (pane->List()->IsListing() || pane->List()->CountItems() == 0)
                return false;
        }
        return true;
    }

    kestrin::DirView *List(size_t pane) { return fKestrin->Window()->Panes().at(pane)->List(); }

    // Selects a row by name in a pane and gives that pane the focus.
    void SelectIn(size_t pane, const std::string &name)
    {
        kestrin::DirView *list = List(pane);
        list->setFocus();
        ASSERT_TRUE(WaitFor([&] { return list->FindItem(name) >= 0; })) << name;
        list->Select(list->FindItem(name));
    }

    std::set<std::string> Marked(size_t pane)
    {
        std::set<std::string> names;
        for (const kestrin::DirListItem *row : List(pane)->Marked().Rows())
            names.insert(row->Name());
        return names;
    }

    // The visible top-level windows of a kind.
    template<typename Window>
    static std::vector<Window *> Shown()
    {
        std::vector<Window *> found;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *window = qobject_cast<Window *>(widget); window && window->isVisible())
                found.push_back(window);
        }
        return found;
    }

    std::vector<std::string> ProfileLines()
    {
        const auto text = ReadFileBytes(fHome.ConfigDir() + "/Kestrin/Kestrin.pref");
        std::vector<std::string> keys;
        if (!text)
            return keys;
        size_t start = 0;
        while (start < text->size()) {
            const size_t end = text->find('\n', start);
            const std::string line = text->substr(start, end - start);
            if (!line.empty())
                keys.push_back(line.substr(0, line.find('=')));
            if (end == std::string::npos)
                break;
            start = end + 1;
        }
        return keys;
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
    platform::LaunchRecorder fLaunches;
    std::unique_ptr<kestrin::KestrinApplication> fKestrin;
};

// Two panes on the folders "left" and "right" of the temporary home.
class TwoFoldersFixture : public KestrinFixture
{
protected:
    void SetUp() override
    {
        fs::create_directories(Left());
        fs::create_directories(Right());
        PanesOn({Left(), Right()});
    }
    std::string Left() const { return fHome.Root() + "/left"; }
    std::string Right() const { return fHome.Root() + "/right"; }
};
