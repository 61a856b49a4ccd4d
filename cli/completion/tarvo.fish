# Completion of tarvo for fish. It belongs into share/fish/vendor_completions.d.

function __tarvo_complete
    set -l words (commandline -opc)
    set -l word (commandline -ct | string replace -r '^[\'"]' '')
    for line in ($words[1] complete -- $words[2..] "$word" 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path $word
        else
            echo $line
        end
    end
end
complete -c tarvo -f -a '(__tarvo_complete)'
