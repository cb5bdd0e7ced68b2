#!/usr/bin/env zsh
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# zsh_offers.zsh FOLDER WORDS
#
# Prints what an interactive zsh shows when a user types WORDS and the tabulator. FOLDER has the
# completions in a file `_wren`.
zmodload zsh/zpty
zpty shell zsh -f -i
say() { zpty -w shell "$1"; }
say "PS1=; fpath=(${(q)1} \$fpath); autoload -Uz compinit; compinit -u -D; LISTMAX=1000"
# Keys that arrive before the line editor waits for them would not be taken by it. The word is not
# the one that is awaited: the terminal shows what is typed.
say "bindkey '^I' complete-word; zle-line-init() { print -r REA''DY }; zle -N zle-line-init"
zpty -r -m shell ready '*READY*' || exit 1
zpty -w -n shell "$2"$'\t\t'
# Ctrl-U takes the line away.
zpty -w -n shell $'\C-u'
say "print -r E''ND"
zpty -r -m shell shown '*END*' || exit 1
print -r -- "$shown"
zpty -d shell
