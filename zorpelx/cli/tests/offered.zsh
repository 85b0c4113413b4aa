# What an interactive zsh offers at the end of a line: zsh -f offered.zsh FOLDER LINE
#
# FOLDER holds the completion _zorpelx. The zsh works on a terminal of its own, in that folder; its
# compadd tells each word that matches, behind "W:", and a mark tells the end.
zmodload zsh/zpty
cd $1
zpty inner zsh -f -i
zpty -w inner "PROMPT=; fpath=($1 \$fpath); autoload -U compinit; compinit -u -D"
zpty -w inner "zstyle ':completion:*' verbose no"
zpty -w inner 'finish() { print -n "\x02END\x02" }; comppostfuncs=(finish); bindkey "^I" complete-word'
zpty -w inner 'compadd() { if [[ " $* " == *" "-[OAD]" "* ]]; then builtin compadd "$@"
    else local -a found; builtin compadd -O found "$@"; print -rl -- "" "W:"${^found}
    builtin compadd "$@"; fi }'
zpty -w inner 'print RE''ADY'
zpty -r inner seen '*READY*'
zpty -n -w inner "$2"$'\t'
zpty -r inner seen $'*\x02END\x02*'
zpty -d inner
print -r -- "$seen" | tr -d '\r' | sed -n 's/^W://p' | sort -u
