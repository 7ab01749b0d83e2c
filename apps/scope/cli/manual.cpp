// The manual page and the completion of shells, made from the options as they are.

#include "cli/manual.h"

#include <algorithm>

namespace scope::cli {

namespace {

/// Text as the page formatter takes it: no line of it is a request, no backslash an escape.
std::string roff(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += "\\&";
        if (c == '-' || c == '\\')
            out += c == '-' ? "\\" : "\\e";
        if (c != '\\')
            out += c;
    }
    return out;
}

std::vector<CLI::App*> commandsOf(CLI::App& app) { return app.get_subcommands(std::function<bool(CLI::App*)>()); }

std::vector<std::string> optionNames(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

void addOptions(std::string& page, const CLI::App& command)
{
    for (const CLI::Option* option : command.get_options()) {
        const std::string type = option->get_expected_max() > 0 && !option->get_positional()
                                     ? " \\fI" + roff(option->get_type_name()) + "\\fR"
                                     : "";
        page += ".TP\n\\fB" + roff(option->get_name(true, true)) + "\\fR" + type + "\n" +
                roff(option->get_description()) + "\n";
    }
}

} // namespace

std::vector<std::string> commandNames(CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* command : commandsOf(app))
        names.push_back(command->get_name());
    return names;
}

std::string nearOption(CLI::App& app, const std::string& word)
{
    std::vector<std::string> names = optionNames(app);
    for (const CLI::App* chosen : app.get_subcommands())
        names = optionNames(*chosen);
    return suggestion(word, names);
}

std::string manualPage(CLI::App& app, const std::string& version)
{
    std::string page = ".TH TRACERY\\-SCOPE 1 \"\" \"tracery " + version +
                       "\"\n.SH NAME\ntracery\\-scope \\- turns recordings into pictures of their signals\n"
                       ".SH SYNOPSIS\n\\fBtracery\\-scope\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR] \\fIFILE\\fR...\n"
                       ".SH DESCRIPTION\n" +
                       roff(app.get_description()) + "\n";
    for (const CLI::App* command : commandsOf(app)) {
        page += ".SH " + roff(command->get_name()) + "\n" + roff(command->get_description()) + ".\n";
        addOptions(page, *command);
        if (!command->get_footer().empty())
            page += ".PP\n.nf\n" + roff(command->get_footer()) + "\n.fi\n";
    }
    return page +
           ".SH EXIT STATUS\n"
           "0 when all was done; 2 when an option, a file or the place for the result is wrong, with one line on "
           "standard error that says what and where.\n"
           ".SH ENVIRONMENT\n\\fBTRACERY_KERNELS\\fR=baseline leaves processor extensions unused; it may be avx2, too, "
           "where "
           "the processor has that. Nothing is "
           "coloured on terminals, so that \\fBNO_COLOR\\fR changes nothing.\n";
}

std::string bashCompletion(CLI::App& app)
{
    std::string script = "_tracery_scope()\n{\n    local cur=${COMP_WORDS[COMP_CWORD]} words=\n"
                         "    case ${COMP_WORDS[1]} in\n";
    std::string all;
    for (const CLI::App* command : commandsOf(app)) {
        std::string names;
        for (const std::string& name : optionNames(*command))
            names += (names.empty() ? "" : " ") + name;
        script += "    " + command->get_name() + ") words='" + names + "' ;;\n";
        all += command->get_name() + " ";
    }
    return script + "    esac\n    if [ \"$COMP_CWORD\" = 1 ]; then\n        words='" + all +
           "--help --version'\n    elif [[ $cur != -* ]]; then\n        words=\n    fi\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$cur\")\n}\n"
           "complete -o default -F _tracery_scope tracery-scope\n";
}

} // namespace scope::cli
