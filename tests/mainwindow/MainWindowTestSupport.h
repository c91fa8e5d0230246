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
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

inline bool WaitFor(const std::function<bool()> &condition, int timeoutMs = 15000)
{
    return QTest::qWaitFor(condition, timeoutMs);
}

// Drops the paths on a widget as another application's drag would.
inline void DropPaths(QWidget *onto,
                      const std::vector<std::string> &paths,
                      Qt::DropAction action,
                      QPoint at)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const std::string &path : paths)
        urls << QUrl::fromLocalFile(QString::fromStdString(path));
    data.setUrls(urls);
    QDragEnterEvent enter(at, action, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(onto, &enter);
    QDropEvent dropped(at, action, &data, Qt::LeftButton, Qt::NoModifier);
    dropped.setDropAction(action);
    QApplication::sendEvent(onto, &dropped);
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

    // The profile's keys, in the order of its lines, each followed by a space.
    std::string ProfileKeys()
    {
        std::string keys;
        const std::string pref = fHome.ConfigDir() + "/Kestrin/Kestrin.pref";
        std::istringstream lines(ReadFileBytes(pref).value_or(""));
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty())
                keys += line.substr(0, line.find('=')) + " ";
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
