#pragma once

#include "app/Launch.h"
#include "base/Uuid.h"

#include <filesystem>
#include <optional>
#include <string>

class QApplication;

namespace korvex::widget {

/// What a start of the widgets asks for.
struct Request {
    /// The widget of this board; absent: those that are not shown, or one more.
    std::optional<base::Uuid> board = std::nullopt;
    /// The desktop asks, not the user: widgets that are remembered, and no others.
    bool isLogin = false;

    /// As it is handed over to the program that runs already.
    app::Launch launch() const;
    static Request of(const app::Launch& launch);
};

/// What the widgets were started with.
class Arguments {
public:
    /// Reads them without a window system, since a later start needs none.
    Arguments(int count, char* given[]);

    /// Whether they can be followed as they are; else `answer` is to be asked.
    bool areClear() const { return m_areClear; }
    /// Says what is wrong with them, or what there is to choose from, and ends the program; returns
    /// where nothing is to be said.
    void answer(const QApplication& application);

    const std::optional<std::filesystem::path>& dataDirectory() const { return m_directory; }
    const Request& request() const { return m_request; }

private:
    std::optional<std::filesystem::path> m_directory;
    Request m_request;
    bool m_areClear = false;
};

} // namespace korvex::widget
