#include "tools/zolt/completion.h"

#include <algorithm>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

struct Shell {
  std::string_view name;
  std::string_view script;
};

// bash parts words at colons, of which sections are full, and does not take its quotes off: so the
// line is parted again. Outside of quotes what stands before the last colon is left out of what is
// offered; within them it is all offered, as those quotes need it.
constexpr Shell kShells[] = {
    {"bash", R"script(# Completions of zolt for bash: source <(zolt completion bash)
_zolt() {
  local -a words found
  local line=${COMP_LINE:0:COMP_POINT} quote= word= begun= cut= c i
  for ((i = 0; i < ${#line}; i++)); do
    c=${line:i:1}
    if [[ $c == "$quote" ]]; then
      quote=
    elif [[ $c == \\ && $quote != \' && ( -z $quote || ${line:i+1:1} == [\"\\\$\`] ) ]]; then
      word+=${line:++i:1} begun=1
    elif [[ -z $quote && $c == [\"\'] ]]; then
      quote=$c begun=1
    elif [[ -z $quote && $c == [[:space:]] ]]; then
      [[ $begun ]] && words+=("$word")
      word= begun=
    else
      word+=$c begun=1
    fi
  done
  words+=("$word")
  [[ -z $quote && $word == *:* && $COMP_WORDBREAKS == *:* ]] && cut=${word%:*}:
  mapfile -t found < <(zolt completion words -- "${words[@]:1}" 2> /dev/null)
  COMPREPLY=()
  for word in "${found[@]}"; do
    word=${word%%$'\t'*}
    case $quote in
      \') word=${word//\'/\'\\\'\'} ;;
      \") [[ $word != *[\\\"\$\`]* ]] || word=$(sed 's/[\\"$`]/\\&/g' <<< "$word") ;;
      *) printf -v word %q "${word#"$cut"}" ;;
    esac
    COMPREPLY+=("$word")
  done
}
complete -o default -F _zolt zolt
)script"},
    {"zsh", R"script(#compdef zolt
# Completions of zolt for zsh: source <(zolt completion zsh)
_zolt() {
  local -a found names notes
  local each tab=$'\t'
  found=(${(f)"$(zolt completion words -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2> /dev/null)"})
  (( $#found )) || { _files; return }
  for each in $found; do
    names+=("${each%%$tab*}")
    notes+=("${each/$tab/  }")
  done
  compadd -l -d notes -a names
}
compdef _zolt zolt
)script"},
    {"fish", R"script(# Completions of zolt for fish: zolt completion fish | source
function __zolt_complete
    set -l words (commandline -opc)
    set -l word (commandline -ct)
    if string match -qr '^["\']' -- $word
        set word (string sub -s 2 -- $word) # a quote that is still open
    else
        set word (string unescape -- $word)
    end
    set -l found (zolt completion words -- $words[2..] "$word" 2> /dev/null)
    if test (count $found) -gt 0
        printf '%s\n' $found
    else
        __fish_complete_path (commandline -ct)
    end
end
complete -c zolt -f -a '(__zolt_complete)'
)script"},
};

int Complete(Call const &call) {
  std::string_view const wanted = call.operands[0];
  if (wanted == "words") {
    if (call.operands.size() < 2) Refuse("words", "needs the words of the command line");
    for (Candidate const &candidate : CandidatesFor(call.operands.subspan(1), call.out)) {
      std::string line = candidate.word;
      if (!candidate.note.empty()) line += "\t" + std::string(candidate.note);
      call.out.Write(line + "\n");
    }
    return kDone;
  }
  auto const shell = std::ranges::find(kShells, wanted, &Shell::name);
  if (shell == std::end(kShells)) {
    std::vector<std::string> names;
    for (Shell const &each : kShells) names.emplace_back(each.name);
    std::string const near = DidYouMean(wanted, names);
    Refuse(std::string(wanted), "no completions for that shell",
           near.empty() ? "bash, zsh or fish" : near);
  }
  call.out.Write(shell->script);
  return kDone;
}

}  // namespace

Verb const kCompletion = {
    .group = "completion",
    .name = "",
    .operands = "SHELL",
    .summary = "completions for bash, zsh or fish",
    .options = {},
    .least = 1,
    .most = kAnyNumber,
    .run = Complete,
    .description =
        "Prints a script that makes bash, zsh or fish complete the command lines of zolt: verbs "
        "and\n"
        "options, and from the live data sections, names of values, properties of cards and cards\n"
        "of a book. The scripts ask `zolt completion words -- WORD...`, which prints what the "
        "last\n"
        "word can become, one a line, with a tab and a note behind it.",
    .examples =
        "  source <(zolt completion bash)\n"
        "  zolt completion zsh > \"${fpath[1]}/_zolt\"\n"
        "  zolt completion fish | source\n",
};

}  // namespace zolt::tool
