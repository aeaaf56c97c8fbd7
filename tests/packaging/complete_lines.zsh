# Types every line of standard input into an interactive zsh with the completions of the folders COMPLETIONS, presses
# Tab, and prints what the line has become, without blanks, an equals sign or a closing quote at its end.
setopt extended_glob
zmodload zsh/zpty
zpty shell 'zsh -f -i'
zpty -w shell 'PS1= RPROMPT=; fpath=(${(s.:.)COMPLETIONS} $fpath); autoload -Uz compinit; compinit -u -D;
    unsetopt auto_menu prompt_cr prompt_sp; setopt no_beep;
    report() { print -r -- "<line>$BUFFER</line>"; BUFFER=; }; zle -N report; bindkey "^T" report; print rea""dy'
zpty -r shell output '*ready*'
while IFS= read -r typed; do
    zpty -w -n shell "$typed"$'\t'$'\x14'
    zpty -r shell output '*<line>*</line>*'
    output=${output##*<line>}
    output=${output%%</line>*}
    print -r -- "${output%%[ =\"]#}"
done
zpty -d shell
