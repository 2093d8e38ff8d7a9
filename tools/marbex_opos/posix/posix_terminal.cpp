#include <histedit.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include "marbex_opos/console/completion.h"
#include "marbex_opos/console/line_source.h"
#include "marbex_opos/process_settings.h"

namespace marbex::tools {

namespace {

constexpr int kHistoryLength = 1000;

// The editor calls back with its own pointer only; this is the one terminal of the process.
class PosixTerminal;
PosixTerminal* theTerminal = nullptr;

class PosixTerminal final : public LineSource {
public:
    explicit PosixTerminal(MessageHooks hooks) : hooks_(std::move(hooks)), historyFile_(HistoryFile())
    {
        std::setlocale(LC_CTYPE, "");
        theTerminal = this;
        editor_ = el_init("marbex-opos", stdin, stdout, stderr);
        history_ = history_init();
        HistEvent event;
        history(history_, &event, H_SETSIZE, kHistoryLength);
        history(history_, &event, H_SETUNIQUE, 1);
        if (!historyFile_.empty()) history(history_, &event, H_LOAD, historyFile_.c_str());
        el_set(editor_, EL_PROMPT, &Prompt);
        el_set(editor_, EL_EDITOR, "emacs");
        el_set(editor_, EL_SIGNAL, 1);
        el_set(editor_, EL_HIST, history, history_);
        el_set(editor_, EL_ADDFN, "marbex-complete", "Complete names", &OnTab);
        el_set(editor_, EL_BIND, "^I", "marbex-complete", nullptr);
        el_set(editor_, EL_GETCFN, &ReadCharacter);
    }
    ~PosixTerminal() override
    {
        HistEvent event;
        if (!historyFile_.empty()) history(history_, &event, H_SAVE, historyFile_.c_str());
        history_end(history_);
        el_end(editor_);
        theTerminal = nullptr;
    }
    PosixTerminal(const PosixTerminal&) = delete;
    PosixTerminal& operator=(const PosixTerminal&) = delete;

    std::optional<std::string> NextLine() override
    {
        int length = 0;
        isEditing_ = true;
        const char* text = el_gets(editor_, &length);
        isEditing_ = false;
        if (text == nullptr || length <= 0) {
            std::puts("");
            return std::nullopt;
        }
        HistEvent event;
        if (length > 1) history(history_, &event, H_ENTER, text);
        std::string line(text, static_cast<std::size_t>(length));
        if (line.ends_with('\n')) line.pop_back();
        return line;
    }

    void BeforeOutput() override
    {
        if (isEditing_) std::fputs("\r\033[K", stdout);  // the event takes the place of the prompt
    }
    void AfterOutput() override
    {
        if (isEditing_) el_set(editor_, EL_REFRESH);
    }

private:
    static std::size_t ScreenWidth()
    {
        winsize size{};
        const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
        return isKnown ? size.ws_col : 80;
    }

    static const char* Prompt(EditLine*) { return "opos> "; }

    static unsigned char OnTab(EditLine* editor, int)
    {
        const LineInfo* info = el_line(editor);
        const Completions completions = Complete(std::string(info->buffer, info->cursor));
        if (completions.candidates.empty()) return CC_REFRESH_BEEP;
        const std::optional<std::string> replacement = completions.Replacement();
        if (!replacement) {
            std::puts("");
            std::puts(InColumns(completions.candidates, ScreenWidth()).c_str());
            return CC_REDISPLAY;
        }
        // The editor counts characters, of UTF-32 here.
        el_deletestr(editor, static_cast<int>(std::mbstowcs(nullptr, completions.typed.c_str(), 0)));
        el_insertstr(editor, replacement->c_str());
        return CC_REFRESH;
    }

    static int ReadCharacter(EditLine*, wchar_t* character) { return theTerminal->Read(*character); }

    // 1 with a character, 0 at the end of the input, -1 when it failed.
    int Read(wchar_t& character)
    {
        std::mbstate_t state{};
        while (true) {
            if (!WaitForKey()) return -1;
            char byte = 0;
            const ssize_t got = read(STDIN_FILENO, &byte, 1);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) return static_cast<int>(got);
            const std::size_t used = std::mbrtowc(&character, &byte, 1, &state);
            if (used == static_cast<std::size_t>(-2)) continue;  // more bytes of the same character follow
            if (used == static_cast<std::size_t>(-1)) {
                state = {};
                continue;
            }
            if (used == 0) character = L'\0';
            return 1;
        }
    }

    bool WaitForKey()
    {
        while (true) {
            std::array<pollfd, 2> wanted{{{STDIN_FILENO, POLLIN, 0}, {hooks_.descriptor(), POLLIN, 0}}};
            if (poll(wanted.data(), wanted.size(), -1) < 0 && errno != EINTR) return false;
            if (wanted[0].revents != 0) return true;
            if (wanted[1].revents != 0) hooks_.runMessages();
        }
    }

    MessageHooks hooks_;
    std::string historyFile_;
    EditLine* editor_ = nullptr;
    History* history_ = nullptr;
    bool isEditing_ = false;
};

}  // namespace

std::unique_ptr<LineSource> OpenTerminal(const MessageHooks& hooks)
{
    return std::make_unique<PosixTerminal>(hooks);
}

}  // namespace marbex::tools
