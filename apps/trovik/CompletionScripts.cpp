// SPDX-License-Identifier: Apache-2.0
#include "CompletionScripts.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace trovik {

namespace {

struct Switch {
    /// Names with their dashes, the short name first.
    std::vector<std::string> names;
    std::string description;
    bool takesValue = false;
    /// The accepted values; empty if any value is accepted.
    std::vector<std::string> choices;
};

struct Verb {
    std::string name;
    std::string description;
    std::vector<Switch> switches;
    /// The accepted values of the first positional argument; empty if any value is accepted.
    std::vector<std::string> choices;
};

/// The values of a CLI::IsMember, which the type name lists between braces.
std::vector<std::string> Choices(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t from = type.find('{');
    const std::size_t to = type.find('}', from);
    std::vector<std::string> choices;
    if (from == std::string::npos || to == std::string::npos) return choices;
    std::istringstream list(type.substr(from + 1, to - from - 1));
    for (std::string choice; std::getline(list, choice, ',');) choices.push_back(choice);
    return choices;
}

/// The text that a completion list shows next to a name: the first sentence or clause.
std::string Short(const std::string& description) {
    std::size_t end = description.size();
    for (const char* mark : {". ", " (", "; "}) end = std::min(end, description.find(mark));
    return description.substr(0, end);
}

Verb Describe(const CLI::App& app) {
    Verb verb{app.get_name(), Short(app.get_description()), {}, {}};
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            if (verb.choices.empty()) verb.choices = Choices(*option);
            continue;
        }
        Switch described;
        for (const std::string& name : option->get_snames()) described.names.push_back("-" + name);
        for (const std::string& name : option->get_lnames()) described.names.push_back("--" + name);
        described.description = Short(option->get_description());
        described.takesValue = option->get_items_expected_max() > 0;
        described.choices = Choices(*option);
        verb.switches.push_back(described);
    }
    return verb;
}

std::vector<Verb> Verbs(const CLI::App& program) {
    std::vector<Verb> verbs;
    for (const CLI::App* app : program.get_subcommands([](const CLI::App*) { return true; }))
        verbs.push_back(Describe(*app));
    return verbs;
}

std::string Joined(const std::vector<std::string>& words, const char* between = " ") {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

std::string Names(const Verb& verb) {
    std::vector<std::string> names;
    for (const Switch& s : verb.switches) names.insert(names.end(), s.names.begin(), s.names.end());
    return Joined(names);
}

/// Quotes the text with single quotes for bash and zsh.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

/// Quotes the text with single quotes for fish.
std::string FishQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "'";
}

/// Escapes brackets and colons, which have a meaning in a specification of _arguments.
std::string ZshText(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string Bash(const Verb& program, const std::vector<Verb>& verbs) {
    std::ostringstream out;
    std::vector<std::string> names;
    names.reserve(verbs.size());
    for (const Verb& verb : verbs) names.push_back(verb.name);
    out << "# bash completion of trovik, made by `trovik completion bash`\n"
           "_trovik() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
           "    local verb=${COMP_WORDS[1]} words=\n"
           "    COMPREPLY=()\n"
           "    if [[ $COMP_CWORD -eq 1 ]]; then\n"
           "        words='"
        << Joined(names) << " " << Names(program)
        << "'\n"
           "        COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case \"$verb $before\" in\n";
    for (const Verb& verb : verbs) {
        std::vector<std::string> patterns;
        for (const Switch& s : verb.switches) {
            if (!s.takesValue) continue;
            std::vector<std::string> own;
            for (const std::string& name : s.names)
                own.push_back("'" + verb.name + " " + name + "'");
            if (s.choices.empty()) {
                patterns.insert(patterns.end(), own.begin(), own.end());
                continue;
            }
            out << "        " << Joined(own, " | ") << ") words='" << Joined(s.choices) << "' ;;\n";
        }
        // A value without a list of choices may be a file or a folder.
        if (!patterns.empty())
            out << "        " << Joined(patterns, " | ") << ")\n"
                << "            COMPREPLY=($(compgen -f -- \"$word\"))\n"
                << "            return ;;\n";
    }
    out << "        *)\n"
           "            case \"$verb\" in\n";
    for (const Verb& verb : verbs) {
        out << "                '" << verb.name << "') words='" << Names(verb);
        if (!verb.choices.empty()) out << " " << Joined(verb.choices);
        out << "' ;;\n";
    }
    out << "            esac ;;\n"
           "    esac\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
           "    if [[ $word != -* && ${#COMPREPLY[@]} -eq 0 ]]; then\n"
           "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F _trovik trovik\n";
    return out.str();
}

std::string ZshSwitch(const Switch& s) {
    std::string rest = "[" + ZshText(s.description) + "]";
    if (s.takesValue)
        rest += ":value:" + (s.choices.empty() ? "_files" : "(" + Joined(s.choices) + ")");
    const std::string others = "(" + Joined(s.names) + ")";
    std::ostringstream text;
    for (const std::string& name : s.names)
        text << " \\\n                " << Quoted(std::string(others).append(name).append(rest));
    return text.str();
}

std::string Zsh(const Verb& program, const std::vector<Verb>& verbs) {
    std::ostringstream out;
    out << "#compdef trovik\n# zsh completion of trovik, made by `trovik completion zsh`\n"
           "_trovik() {\n"
           "    local -a verbs\n"
           "    verbs=(\n";
    for (const Verb& verb : verbs)
        out << "        " << Quoted(verb.name + ":" + verb.description) << "\n";
    out << "    )\n"
           "    if (( CURRENT == 2 )); then\n"
           "        if [[ $words[2] == -* ]]; then\n"
           "            _arguments";
    for (const Switch& s : program.switches) out << ZshSwitch(s);
    out << "\n        else\n"
           "            _describe 'command' verbs\n"
           "        fi\n"
           "        return\n"
           "    fi\n"
           "    local verb=$words[2]\n"
           "    shift words\n"
           "    (( CURRENT-- ))\n"
           "    case $verb in\n";
    for (const Verb& verb : verbs) {
        out << "        " << verb.name << ")\n            _arguments";
        for (const Switch& s : verb.switches) out << ZshSwitch(s);
        out << " \\\n                "
            << (verb.choices.empty() ? std::string("'*:file:_files'")
                                     : "'1:value:(" + Joined(verb.choices) + ")'")
            << " ;;\n";
    }
    out << "    esac\n"
           "}\n"
           "if [[ $funcstack[1] == _trovik ]]; then\n"
           "    _trovik \"$@\"\n"
           "else\n"
           "    compdef _trovik trovik\n"
           "fi\n";
    return out.str();
}

std::string FishSwitch(const Switch& s) {
    std::string text;
    for (const std::string& name : s.names)
        text += name.compare(0, 2, "--") == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (s.takesValue) text += s.choices.empty() ? " -r" : " -x -a " + FishQuoted(Joined(s.choices));
    return text + " -d " + FishQuoted(s.description) + "\n";
}

std::string Fish(const Verb& program, const std::vector<Verb>& verbs) {
    std::ostringstream out;
    out << "# fish completion of trovik, made by `trovik completion fish`\n";
    for (const Switch& s : program.switches)
        out << "complete -c trovik -n __fish_use_subcommand" << FishSwitch(s);
    for (const Verb& verb : verbs)
        out << "complete -c trovik -n __fish_use_subcommand -f -a " << verb.name << " -d "
            << FishQuoted(verb.description) << "\n";
    for (const Verb& verb : verbs) {
        const std::string start =
            "complete -c trovik -n '__fish_seen_subcommand_from " + verb.name + "'";
        if (!verb.choices.empty())
            out << start << " -f -a " << FishQuoted(Joined(verb.choices)) << "\n";
        for (const Switch& s : verb.switches) out << start << FishSwitch(s);
    }
    return out.str();
}

}  // namespace

std::string CompletionScript(const CLI::App& program, const std::string& shell) {
    const Verb whole = Describe(program);
    const std::vector<Verb> verbs = Verbs(program);
    if (shell == "bash") return Bash(whole, verbs);
    if (shell == "zsh") return Zsh(whole, verbs);
    return Fish(whole, verbs);
}

}  // namespace trovik
