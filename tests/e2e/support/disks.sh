# Key disks for the end-to-end tests.
# shellcheck shell=bash

# english_disk FOLDER: a complete English disk of 27 items, 3 of them options.
english_disk() {
    mkdir -p "$1"
    make_customer_file "$1" <<'ITEMS'
[CONTRACT]
Corporate
[USER-NAME]
EXAMPLE TRADING
[USER-DIVISION]
SYSTEMS
[USER-ZIPCODE]
1000001
[USER-ADDRESS]
1-2-3 EXAMPLE STREET
SECOND LINE
[USER-TELNUM]
03-0000-0000
[USER-EMAIL]
customer@customer.example
[USER-CONTACT]
JANE DOE
[USER-SYSTEM-CD]
U12345
[SERVER-NAME]
SRV-FROM-DISK
[N-CODE]
N8100-0001
[SERIAL-NUMBER]
0000001
[GUARANTEE-NUMBER]
G-1
[OS-NAME]
LINUX
[OS-VERSION]
12
[SUB-N-CODE 01]
N8101-01
[SUB-N-CODE 02]
N8102-02
[SUB-N-CODE 03]
N8103-03
[DEALER-NAME]
DEALER
[DEALER-LOCAL-OFFICE]
OFFICE
[DEALER-CONTACT]
JOHN ROE
[DEALER-TEL-NUM]
03-1111-1111
[SE-NAME]
SE OFFICE
[SE-CONTACT]
SE PERSON
[SE-TEL-NUMBER]
03-2222-2222
ITEMS
    to_sjis >"$1/AMVLXADR.INF" <<'ITEMS'
[E-MAIL]
centre@maintenance.example
[PHONENO]
03-3333-3333
[ERROR-REPLY]
errors@maintenance.example
ITEMS
    to_sjis >"$1/AMVLXHBI.INF" <<'ITEMS'
[HEART-BEAT-INT]
10
ITEMS
}

# japanese_disk FOLDER ATTRIBUTE: a Japanese disk; ATTRIBUTE is the catalogue's text for the
# contract. The name has half-width katakana with a voiced mark.
japanese_disk() {
    mkdir -p "$1"
    make_customer_file "$1" <<ITEMS
[お客様属性]
$2
[お客様名称(カナ)]
ｶﾌﾞｼｷｶﾞｲｼｬ ﾚｲ
[お客様名称(漢字)]
株式会社例
[装置コード 02]
N8102-02
[住所(漢字)]
東京都千代田区
[担当SE氏名]
髙橋
ITEMS
    to_sjis >"$1/AMVLXADR.INF" <<'ITEMS'
[メールアドレス]
centre@maintenance.example
ITEMS
    to_sjis >"$1/AMVLXHBI.INF" <<ITEMS
$3
0
ITEMS
}
