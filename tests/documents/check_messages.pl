# Checks that docs/troubleshooting.md is complete: takes the prose from the string literals of the
# library's upper rooms and the program, and lists the messages that the page lacks.
# Usage: perl check_messages.pl ROOT
use strict;
use warnings FATAL => qw(all);

my ($root) = @ARGV;
my @folders = qw(ConfigurationFile qncertificates VDCertificatesFileUtilities tools/vdcertificates);
# Without messages: help, results and scripts of shells; and statements with notes for the trace.
my $silent_file = qr{/(help|commands|where_command|completion_command|progress)\.cpp$};
my $silent = qr/QN_TRACE_NOTE|QN_TRACE_FUNCTION|static_assert|\bFUNCTIONS\(|^\s*"--[a-z-]+",/;
my $literal = qr/"(?:[^"\\\n]|\\.)*"/;

sub content { local (@ARGV, $/) = @_; return scalar <> }

my $page = content("$root/docs/troubleshooting.md") =~ s/\s+/ /gr;
my ($messages, %missing) = (0);
for my $name (grep { !/$silent_file/ } map { glob("$root/$_/*.cpp $root/$_/*.h") } @folders) {
    my $code = content($name);
    $code =~ s/($literal|'(?:[^'\\]|\\.)')|\/\/[^\n]*|^\s*#[^\n]*/$1 || ''/gem;
    while ($code =~ /((?:$literal|'(?:[^'\\]|\\.)'|[^;"'{}])+)/g) {
        my $statement = $1;
        next if $statement =~ $silent;
        $statement =~ s/"\s+"//g; # one literal over several lines
        while ($statement =~ /($literal)/g) {
            my $text = substr $1, 1, -1;
            next if $text =~ /Example:|-----/; # help, and the label of a block
            $text =~ s/\\n|^Error Message: / /g;
            $text =~ s/\\(.)/$1/g;
            for my $piece (split /\{[^}]*\}/, $text) {
                $piece =~ s/^[ .:,;()'"\\]+|[ .:,;()'"\\]+$//g;
                next unless $piece =~ /[[:alpha:]]{2,}( [[:alpha:]]+){2}/; # three words at least
                ++$messages;
                $missing{$piece} = $name =~ s/^\Q$root\E\///r if index($page, $piece) < 0;
            }
        }
    }
}
print "$_ ($missing{$_})\n" for sort keys %missing;
die "docs/troubleshooting.md lacks the messages above\n" if %missing;
die "too few messages were found: $messages\n" if $messages < 50;
