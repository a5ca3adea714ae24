// How likely characters are. Made by tools/detection_tables; not to be changed by hand.
#include "cli/detection_tables.hpp"

namespace cli {
namespace {

constexpr auto kLanguages = std::to_array<Language>({
    {"English", U"abcdefghijklmnopqrstuvwxyz",
     "Dbbcjtcbdabktq7T0eeia76RcsfSlpv6kNyvbq3yyWdWyfT2Mzie3nDuh3yvlrvjs+05dSkmtrasiTsjmK9je5/dx3"
     "bb/84m2OcX8qkycW+1J2o3i/0q3lk390kabf3qZTzSz88S/Zn89/5n6p/n5N1OeX8r1+Vfv2KtZtx+WynkbtzyK1O+"
     "X0cS2lf33KrSiz8lamqTf8ykbimvjZb5aTe3R1h0j8W6fUS295t9//v98/nkH//KrZr68jaubUl74dlVrXltb1aene"
     "K0puK/mynbj9zykkcmfySq6Jn8/Z+4v5/9z/92/35P9WqP06X6m3u/Lyyvh/21P2O3ko12mvn0cS9T/vvU2gu7/96/"
     "s6/+w"},
    {"German", U"abcdefghijklmnopqrstuvwxyzäöüß",
     "DcTcjskcmijb2d18yb1bmaZ8yRV0u/+Slosimdr/bb17v97esmwvU2c8kv33//Jvo2y3lrvkr22/+5sksjXjhtxTls"
     "129SthUy/ei3bb99k65U2Gmfjrs6bf++3fSvptr+Mb3UMt9rt7kTMV3jZU7S099//K/Yn8l/6n7q/l/s6N1PdfzsN8"
     "aev07vSlZjy9WjnzTt1sj5L1NmX0Vb+kev+rnDlSiq8lcvzTt+dt7ra0c2iZi5bdl8/8R0icj8ezfMTu9+/5t9//n9"
     "8/nkH////LkSji8jbujTj9ck5lUUcXltj0Rlnlv/L1pli+lsnbb10c06kcadnrRz6Kms9/9T+w36/9x/1v33//7X9G"
     "tP28f9uX2/cnD0rfp8tsXuN3kv/5s1nnurSh9J13n//avo379m8/2Rr9ku/+b8a36p/qZf/9/8/63Sn/1XnZX////N"
     "6Xza/5k75L//+//Pn4978fv/td//n/4"},
    {"French", U"abcdefghijklmnopqrstuvwxyzàâæçèéêëîïôùûüÿœ",
     "DjTdruUcdijm2s//l////6zUzfUyazaST0v/+//n///Stz26eFy3Ta/0v//v////6XlWxfj2O7if3v//s//3//K3o3"
     "y31zvly/2//9X//+/4ld0vu7a1yTdz0/+//////S9jWw/ly/bk/9//+f////6euOtW8hkykW+9//r///+/Z2p3h+0y"
     "3ll383/+f/8//7jTTf3yaUaS789//k/////b/Zvsl/4v7x/n6///////4csPVX9lk1Uf3u//8/////S1o15+Wzu0j2"
     "03/8f////6L1N+X1VR/ln3///jn////LzSkz9ua1qLn+//3e////r0b1merRrqbNun/////+3/R1q1b9W5fUT2+/3+"
     "e/+//7////3/+/39H//////////Kshr6+ritbVm9//sV/9//4emV0Xu3blSe3n//z///3/K1p2h/u7vTb+0/v8d/+/"
     "/5kcMud7azxSr73//82////Z+436/9y/e0/3///X////4P7dbXs6f7kvc/////////Lzyvx/u1W2W3lv//X////5dv"
     "WvvzSp9L2v3//7/////F2iu7/96/s6/+3//f////4/+////////////////////4////n/7///////////////////"
     "///////////////4//////5//5////////////k/n/7O/pJ8//////////MhhU9nbmUSVn////v//////n///+X//4"
     "///////////H////////6/////////////n////o//6///////////H//////////////////////////48//5////"
     "///////H////////////////////5//////f/45/////////////4/////////////////////////////////////"
     "/////////////4//////////4"},
    {"Spanish", U"abcdefghijklmnopqrstuvwxyzáéíñóúü",
     "DjSdj2bccijm133+3PaW11mTfkKcesv+n3asq25mNyvLb/z128nZ7q2R8exvdT++/19/S3o3631xvt022/1//Lick+"
     "mTVlRemev+v/S9iew/ly3cj/9+9//S1y1i3kSeUh3/v++fR3ovi+1y3lc3+vl//baTb+ubSlaffvfv6/S/gv99/5v7"
     "y/v//9/Lkh6q/ksfqj98v///J1i06+cyt8bn1+z83ZXp3y+tiX9r+/7l+vKzSb71mx2zLf/u/+nGbes12aVcSkt3//"
     "//Zyq0r9e5vMa2+8/+ve/3/+/3v+2w//////JrZz6ujitbcm9s99/Drqui917d1Tu9/+9/R1xup/txnUr+1zu93ajZ"
     "kzubNfSU3klm//Z+536/9x/+z336k//J/b7a9nb/cl7v////Ly0vp/u2P+N3k3///C2y99+kjfrT28+/+nQyju8/96"
     "8v7/+1/8/Oq3j//LXsif/X////Lk/n//fPfJXvf////Zjcj/vyC17f//f///4/9////4/////9///X/n8//VHvd3/3"
     "////ja2d//QP/an///////////////////////"},
    {"Italian", U"abcdefghijklmnopqrstuvwxyzàèéìòù",
     "DjTcr2cccajd23n/50c1emya86Zj9r///SVz24mWy/cq3zv//7PVW5Xk+Ozrf3////Svp2x32qvtz+2//34lc0fnya"
     "tpT8ts///a9ie4/dy3cj/+///6WuWTP6qU6tW/9///S3o3h+1z3dd3+/0/5bTbf/ySU7ab97v/1S/R/7//4f78////"
     "/5csPVX8lj9UX/v///K0pt6/M6v9bv1///7L9P+X9dR/tf/////KzRj69vhmzLn/f+/58b1nvrRr6Tju9///Z+p8j8"
     "e5fNau+f//6////v99/nvH/////Szhr5+javbcm8t//5dWV0Xt2T+Revv/+/R9p3p/15nVT+98//7ckUnfzZT6Rv98"
     "//nZ/4/5/+6/n7f////5P7fbXq6P7fvl////D7rnr/l9X/Uvrv//409mnvskj8R+/v///h2q/4/+7//9//P//4////"
     "////////////H///////////////4////////////////H///////////////4////////////////H///////////"
     "////4"},
    {"Portuguese", U"abcdefghijklmnopqrstuvwxyzàáâãçéêíóôõú",
     "DjTdrtjbcibl2u//v//x7a2ndyakxTs1s//f8//Stpu6mVzvTa36/v/nj/zOtWzXj2M7rf33//+mv/R3p3y31xvd0+"
     "2/3/8v/5lcsnkzSsqLsz1//n//+R9ie5/dx/jj/9/3//n/6VuOsW1icycP/2+//0//R3pvj/1x3la3+vnv/v97cSjf"
     "2zRTqSy879/f//+Z/hv89/6/7p/n/Xv///4k1PeX9ls1UX3u//////KtitR9cyt0Tm9/2/tt/5L+O+X1uS/tn3/7/8"
     "tn9arScTsuquzLf3/vU+m3Y0b1mmsSryUcu///3///R1q1r9e5vUbu+/n6382z29//3++/81H////////Jshr69riq"
     "ccm9/ml10+4edVsXtmbuSevv97/7vvR1pui/tynUj+03evlr/6UkUuO7Lr6Sm898/nt//Z+536/9x/m2///X3lv/5P"
     "7fbXs6f7cvk///////Kyyvx/2yX2O3l/3n//+433n/37ja8R2vf//////J2hu6/+7/v6/+3nv9/94////////XX///"
     "//////Pu/j//P/rLnXX/////////////B////////////3//////4////////////X//////X/////94///PH9v89/"
     "y33af////////4//////Y//X/////////mjPj//sd/jfH/3/////7+7/X36/74S/7/////////P////H/f////////"
     "////H////////////////3kX///IX/6f3///////4"},
    {"Dutch", U"abcdefghijklmnopqrstuvwxyzëïéö",
     "Dcbjbsjbeicb2n+7Mc7fnaZ76il0v//alw26ndzvMr273/6ekWwfctM7qm33//Kuo2q3trvbb123/5rkUcnah0xSjs"
     "01/LlTbi8dp3iT103/5d0Hlf1sl7cd/+//S3oui/1y3WK39v/8ljMXybZk8S099v/TvLT1ymMn6zU2X/yT2PleUtV8"
     "am33/3KtRjqsWqnqat93/5L0NlX0WT+jmv9//DkTiq0tkvrUl/v/7sbTeujRS5bbm+3/JtazjscjWTUk+v/4n8///8"
     "7/8jH////KkJrq7jinibj9v/4kVVsersk9Zlve//Klp0i2lrvbck0v/6sjcePTS06SeU8//Z/427/ux/m133/+6O0O"
     "tP28P9u1u///Ljzdq/v0PuO3cv/5tvvv38Sp9J1vn//b3o25395/t79+3///nn/P55/4/87/////9///7H/8/////8"
     "//////4//l////H/////////H/////4"},
    {"Swedish", U"abcdefghijklmnopqrstuvwxyzåäöé",
     "Dkbcjrjbeicd2tl50i9dvaZ85ar13//Sdx26mVyvbr36sr6ekWpfEuc8jn3n//Kvhtztljvbrn29t5tbsk1aZs5a10"
     "3//btqe5vVy/Ub/88Z5V0NUV0qc6Te/2bnJ3pvin1i3ljv9yT7kijW3ZhU8T689//J/Zv9tfiv7q/v/T6O2OmdzzN6"
     "ib/vznKuikqcNbnrTuz8c5M0MuWsSb9jl33cnKtTii0mbvqTf79m7rTkV2aJj5bkm/+/Rtisr8diWTbu+6n4k8///8"
     "7/kjP////JlasqkjbvjUm88d5dtUseTsb9Zl3esnJtplp9kjvbTu01c6srcmfjSy6Rj8///Jmpty9td/jkv18P4P7V"
     "bXs7f7kvc///Dsqfq8WsXtN3kv/6dLueurTq7R233//MvZl6n86/j5/9v/5t7mX3y5+6S8//3/38ni/7TPvLfnn//9"
     "3zvn0Tj74V6////H//////////////4"},
    {"Danish", U"abcdefghijklmnopqrstuvwxyzæøåé",
     "Dcbcjrjbeibe2t2zzjyeuRZz6Zj1v//Stp26lNb/Lj3y2k5VbNqXbtTzinun/9KuZkq1djnabm9+uplisk0aat5a01"
     "3//Ttqdhddx/Tbv09d5e0NjW7qk7Sd/elmS2pvjf1q3ljP9qb6ljjW3Rhc8Ty99/+T/Yv9vPzvjr/u7f6W+OveM1W6"
     "bU/ns2KmRjysVjnybmz7lpL0NtXsVb8kl33keLtKijjmbvrTv89l7sbkV2aRi5cjm///Rtijr8eyXLTu++iwk8//n8"
     "7/njP////LlZsi7jbvjbm88tpdtUsXTsb9ZlvekmKtpup2tjvcbu01eqkpcOnaRr7ak8/v/S3ovx+1U/1m//69oP7X"
     "jXs6f7cvs///Drrnr9tsfsVvb//68yfmuJbq8S1/3//M/Zl6/86/l5/9v/90kzn3ap/5S7////nXcx+UTW/KXf///4"
     "67dn/jy/6V8///nn//////X/HX////4"},
    {"Finnish", U"abcdefghijklmnopqrstuvwxyzäöå",
     "DsjlkbbbeiUd01/Kts1iiTWnTTfu//Kk696VVpnain7//K0a0U6chebTs+//Kmp3yvtpvts/r8/UsStijTNfSMms9/"
     "K7bVp/kqvba/8//Ltp8i/cLecZ3/v/Z3RvyTrz3tTn78/L1isjjbLnRWfv0vh/x/7/2x3973/53a3x+562x3qi386v"
     "a2p15jL6n1an87nZnx/x+jzf+q/863D1i0iruTvsTv07vTsdtabTLfZUl3//R1q0y+m6Wcim75/Hf//7/fX/75////"
     "asqrRSjqujcW873K1q1p0k0nqLu77/R2y3q01yvjS/76nT2btqiTSnaSfv//g/6/5/+y/2yv86/J/T6a8/b/c/7///"
     "D7qn79l/X/Vvk//W/d+UrbWfiPf68XLkRn6/86//5//n/N/s/jcTTvTXn66/N/u/brTUfiP368f//////H////////"},
    {"Polish", U"abcdefghijklmnopqrstuvwxyząćęłńóśźż",
     "EcdksjcbWibr2f/321Oje08aTPfTcz2ffc90Ssy26tVi/Tz+y17Xn/b1q2JUurvlk+7N+/v/Jri28scRfcr8zU9fuu"
     "Njdj+bbVnSdsufvk8zS8bdx+dh2Sj/0/+///S1j9q3dRmVi13s9ff/C0jvi+0qvlc08v933/SrZs8qkTvqksvkj2u9"
     "J+p3690cv0b9367/6/Rz096+ep3bS8+99fe+Slhtx7mSv0i2119/3/Jlq3x8tZf1r+7+/3n/Z0ik48viv0b2689/3/"
     "ObWj2rbVfTcp3f/k77azr1q9WhvNb28/9vn/Enn/8/nf/kY///////Rrir79jhurTs6O8/f/Lsr1ijuresK17U/fn/"
     "J1quk7lanVq7y073f/Lacj8ciVfScznv/u+6J14nz/8s/8v3v/////J1i9y9/Tnjs+5l9fv/Drrnr/tsXtV3cv////"
     "Pamc+bamfiX7+vfn79Rch871zSnlr6678n3/P5P8/+//n/f9/Xfv/8H/////////////////HpP9/7//X9X//nnv7/"
     "R0r//8/Z/96/656/X/H4///////6/////////bf9/ln//Uf4//3f/jn4////Mfvf/6//P///P/f///fP/P/9//P///"
     "T2Z//7fM/0+/57////"},
    {"Czech", U"abcdefghijklmnopqrstuvwxyzáčďéěíňóřšťúůýž",
     "DcdlkckTWikd2fn//9vv9ObWtcaTWfTUemXf/+7v/8Ztr27ldZ/Tyv60/7f+3+fT1h2K6linkc+9///X//8/Kta3zz"
     "dSfTrmzz3jf9/8vNbdlubTUfSdelen/+9n38T8bdx+dp2Ta/09///+/+/Mtqsi2kLdUhmtu/////+/K8q3j+VZ3ejv"
     "6z/n///+mMicblbbUeiWfndn/39n/8a/g362ycv7Un38//X/n9/S0j88+Wh3dSn663f/m/7mSlita8eZv0j20b3nV/"
     "v8mKlq3y8tif1i+863afv/7lR0hk78uiv0bv7ynbP/3+XOcWsmjbdfTaV3ff/+8v/7b8r1r9fZvMb2+9/8X538/Enn"
     "/8/nc8kZ//////////Srirz8jZusam7ann//v8kLsq1j7UiftLu7z/3n//9/K1pui8kandqez0/jf8v8vMVctkUbeX"
     "bcnnkm///n/6S9i3r8ma3k0/yi3be8n9VJ/ara9fb/cl8n////////Msrvp/urXuKvkv//v////HVt9m0UeXqVv+vn"
     "//8v/7RkZ3rkjSfkjf86//fuv8/P8X/ntTPfbXX/X3//6n/8S95/77vU//T3/7//P//7/E/////////K//////////"
     "H/n/P+ZX/sn//n//////9P7f/nbUPvcX3/Xd/+7k/7H6n/fqbfnifn/ff//8e/9H/v//6/5//Z////////////H///"
     "/P/fn//////////b+4/58/l//1//6//P//8/T/4/67fbf+U3////P/t//H//////5//b//////////v/P//7MnXRnX"
     "//X/////9Ht///ub//q/X/n3/////6Hhn/31q/naXn/n////n/+TtR/573U/9k3/6+/V/v//"},
    {"Slovak", U"abcdefghijklmnopqrstuvwxyzáäčďéíĺľňóôŕšťúýž",
     "DcdlkcjTWikd2f83///999OjWtcaTWnbUeuf73/t/9f9Ztz+zldZ3Tr36s++v3/+93T1i2J6liulc193//n///2/Kt"
     "i2qrkSfTrnsb99lt8+8uFbVslkbUfTdmlm8v/d/8m8T8bd5/fpvba/9///3/////M1p8j/kLfUZv/l////v///K0y3"
     "z/eZ/db368/9ef/9+fSjhjsjbUniUnvl8/n/v8X+TvY/0+9c37Vn////v//96/R7r88/dpvdSn66+8/fm/8dS2h1i9"
     "fZn0i37z+8X/v99nKmp/y8lhf9i/76n9v/r/+uZ0hk68vi30bv8y86f//78XPcXsmjbdfTbN3f7//d/9/7T1r9z9WZ"
     "vNbu99v/e/9+83H/////f/774///////////Srh0q8javsjm7a98f/+98lKt7/j7Ujf0Mu78//n///a/R9q3i8kRnU"
     "iez7/zd+v/8nLtbtsTbeXbWnvj9v/3/8v6J9q/68na3cs/6ju7v+989VJ/U6a8/i/887n/////////M76/5/s7X9M/"
     "j/////////GUu2X7reXjVn9v8////8f7Rkb/i9bRnk7f86//f3/9v/Pyn/vdTWnTVP/W93/+/839//////////H//X"
     "5/////H/R/6/66nS//k/////P//8+/A//////7//j//////////8H+v/X/6v/nv//3////////P8v//5bfnaXX/v9/"
     "///7/9/X//////P////////7///4RP///60S/7jn////////5/C//////5//Z////////////fH8///HXXn///////"
     "/////j///kX//inP/f///////4//////////////////////T/5/i7mcf9M3////X//8f/C//////8//2/////////"
     "//PKn/n9dnnbfn/36////7f+Ha///9ivnTvv/n/////938avZ/57+N/9j//+//X//9+/"},
    {"Hungarian", U"abcdefghijklmnopqrstuvwxyzáéíóöőúüű",
     "Ckjdcrbcmicd2tl19vOkfq0iTWfSVnuW///3RWx2yldz/k0f8ykck+Tsj3S7lrvgc9++j///Kmh3idsinjjftyclW2"
     "VklidjKVnSWmmUt///U9pey+tx3cj/95n2vcKuyjbdlancjn5sdul2Y/p3h/+x/uk/+8js9/LccblqTMnidfnczf83"
     "Z3Z2+uPz3kV//yn09tKmy1qz1q3kbv/8ci/mKkZsbkTjvjUf7rbcmvKexvqtsrntk3/qdd98KqZkyzmjv0Uvyyc1l2"
     "ekmr2yKVfKUkvX////RpisskdimUbl+8S223H/////nf/84///////Rjhrjkbj3cVe9ackmdKtquj1sqvjc29Lbul2"
     "KlyvjjlivcTn16Ubk1Vtbj0sJVfaM3nr////R353q2+z/2Tv/6V2nlB/b6a9nT/kv7n/////Csqni/tsXtNvb/n//9"
     "Lnxvj1kinrWW+bk92tKvi2i8lT/9Vv/iUcUltc3suULX3RVf/n8///nkv6mrVXfJXX/nv///38/8/3jnfNHX/n////"
     "EeWnjaXfvbWn/uvv//3fn9/7TPvKXP/X////HfcnkaVnnSWf/cu03/M1/7/PPn/ZX//n/////vv5/6Hn/Vf//f////"
     "Pv8/nhff/SnP/X////"},
    {"Romanian", U"abcdefghijklmnopqrstuvwxyzăâîșțşţ",
     "CqTcr2cbeijl237m3Oink8mUfnLLnuf/j1Srr95mXrncp39r+r+Z8q3S8my3dSu/6e7+Kuw2y3trvlz/u73//Cilk7"
     "ubVnSdmen+ctb9ilw/lx3dj/+7m//S1p9i3lSeUh3/iv//T3ovh+1r3ldv+9+//Liac7+TUnbTfvf/ctR/S/78/6n8"
     "5//8///Ktp6q/t8f7i/9////K1pt5/eyv1an1z39/Rfp/y/taX9r//6m//TzSk61urvrJn/j/r9Saes81SUXKbtvn/"
     "2/R9p1z9e5uMSu+7v68H/////f//b5//////S0hzi+ri3ran9zvt2Lqxni9s8f0K2972//K9pvq/t6vVq+16v//Ljk"
     "s6/KPfUWvvs/s+Y2536/+63m1336n//J/Tqa9fa/j97/////Ly63x/2+P/L/8r3//Ef7///acXifk8////Z3i/y/17"
     "/963/wv//H8v++/0vvTU//3/s2////7/hH/XP////n/3///9/jH/vv////3/q+6/4//m//L//+3//z/6/4//3//+//"
     "7///797/4//l//J//9///j/6/4/////9//7n//"},
    {"Croatian", U"abcdefghijklmnopqrstuvwxyzčćđšž",
     "EkdkrjkbWijl2d32PbestabUnUUW2ctsRty25eVi/Mrn83//S1i1Yrlzncb++///Jdq1ynkSvVrm23/+EkVktybUnb"
     "cemkklL8bdx+cp2bb/0///Ltq1r2cSmMh333//C1iva+0pvlUe9v//NrdkmLaUnSXfvb2eR/w/7+1k/8a33///R0y+"
     "6/ep3bSn+///RtitxNeZv0j113//Jep3ydlhfts++/3/R0Zk5Uuqvzbv+2//OcWiuTaUXSUV3cukayr1qdmhvMb2++"
     "33Enn/8//f/jY/////Rshzhtraurbm9v/cKsq1iyccWsLd93//R1puhrlZnUre03//Ntlk0badXSUnnbekZ+x35kea"
     "/V0/3//3J/b7a/fb/cl7n///Drrnr/tsXuWvc///F9s/9/bcXiVs8///Qfj06/cL/e7f////b/5/4qfP3/7n////S/"
     "4/5//l//7/////4/5/6/////5/////a95/55vXv/N3/7n/hnY/5n/f//7///8/"},
    {"Turkish", U"abcdefghijklmnopqrstuvwxyzçğıöşüâ",
     "DcUjjzkkmqclzk+lvNcfldySPnLduycf7/Ztq25td6/sy/930ffR1hta7lynca9+/6/fS3p353mqvlz/2/5neNjdl3"
     "6TVvLWmrrf8/J8adx+cq3bc/0/6//Uux1p2tcmcj//u6XXR3hvi+krvkMv9u8/9Nkllu7TNnSfnrTn7/S/Rn78f6n6"
     "p/f/8X/K2y968U73rS//17vnR2Z069Trv1j21+6/fRkh1y9V0n0q//n6/fKrSs69b03kb38362nekekuyKUfJcsznn"
     "7/Jsi0i8U6mTUt826//E/n///nf/k4//////Ksarq8bj3rbu9s68fKtq1i7srvsU2636nfJtpmh8czncj2026vfOkk"
     "ts7KWfUUvjcf7/Srg3y/l1/cs32//+/B/b7a9nb/cn7n////Drrnr/tsXtVvcv///Y2ij7+dZvcb/9/6nfK7az5+Uk"
     "/07/9/63nSn5/5+k7/2u//+5nfc/q/4/U2/W6///59nPznn/6TPvTn/7dn7/v3/7/7OP3Kn38Pn2/K/r+67L//8Lv/"
     "v63nX9v//6ZXvLff7Tn7/P///H/P//////////"},
    {"Russian", U"абвгдежзийклмнопрстуфхцчшщъыьэюяё",
     "Ejrub7sbUUctl//nvPbjcWTTXaatkcv/8da3/Xz6XR6nXk/bW3mJ82Xy7Uarcfn9/V/uT2bf6+dQ53X33//3/Z00N6"
     "8Vablftt/m3tOrjkkbTMiSutkv/+2iv6P588O33f///9/8Ri6mz8qS83f93/e/nMbkVbbadjS7kcv/8XH+8v/7Nn/S"
     "//u////R8+Vy/Wp7bf8+//v/SvvU58nZ/ve/n/h6UJr/P6+zhn3f///X/dS+zPx9/R/rc1v/V+lXaabcbScaT+tj3/"
     "3nh//X6+nhh0X9//m/vR0eL687Ztbem0/d/mbk9d66UiUZetl/j+WSz+Xq7taqXe/v/Z/uVlhTnjafTK8vdf/y3o//"
     "f5/dx6ub///3//Es/f6/+p6uv///+v/S9/P49/8v3f+//X//Z//P582U+6v/1/9/8a2/P46nc+1n///9/8y//H5///"
     "//n///7/7///H////////////TPa8WnNb/bi/Xl///3H/+vW79X/b/8z//82/8s//yWnlo7v7////On9//+vv/q//P"
     "P/1/Hz8Xmvsf0q/k/v/7nX/t9n9rH7Z/n/////"},
    {"Ukrainian", U"абвгдежзийклмнопрстуфхцчшщьюяґєії",
     "EirufzscTck0lv89mPbj8XTTPaatkc3u7/a/3X68TZ6tOvn///XRsrUp7dalcfm2///XS2vn7+cQ68O1+///fRk1T6"
     "6URbje128+/XNrj7fijMha1ss/1++an8P58XL/8X+n///fRarn08iTkld/0+2/fPjk9nSSfcS7ckn9+/Hk7//8Mb/i"
     "//9////R9/ny/Wh7bX89f//XS/vX6635//e//6S/XJr3P67min1X/v///Ph/rPy7/R/rd118i+XOaTzfzafaT+sd3m"
     "+0a//X69nh5sf+n///XSsdPx87hujel7+j/Xb9/f67ebXxWt+8y/fZ7/X57ta69W+/6t/fFpr8nsbfca8vdnn7/g+/"
     "f//k57uf/////PF8/f7/ui81nv////Pn//P6//3v33/36S/HR//P583U/+n+//+/Xa7/P57ea+6X/////Xr//P8//4"
     "/+f/////nH////i+K/L/+7/9//H618/+9v+q//P/n6/H8q/nyzn9r/k3/v9////P////////////HH+7/n86n8h///"
     "/n/8Mih8fbTVzT/lkvk87H7///3+v/1/X////7"},
    {"Bulgarian", U"абвгдежзийклмнопрстуфхцчшщъьюя",
     "Ejjnb7sTcUs1t3/w8derzbi8cX1ks/9p6+Py9Xi5fXn/a/iP9xuXcjVbk7//X8a7vn7/VS53P//9/6Meh3X2qVdz9+"
     "2f9GkizdrbNbaltjv/zX/J/Xf7v/t///3/Rirny7jUTrnel9+xlcjyebTsTXmju/6P2+v/8FW/R/////6Pf7/X78Pb"
     "T/f/f/SsmMZ8/S/sf//77aNfx/XuzMus///v7R+zPx8ni/jk2/+/h7TVbjiT6SX2j1/8i+/X69np4kn6/6+zPjhlXu"
     "cV8c0+nf7Sz/P67Ujc5m+36/hOdp/XmrNVl3+/n9ciclv6RWTL7+df//H/z/X8vPdi/////T6/n6/9Y81fv/9/8Xv6"
     "/H3///+////7h6/P56uU7+v/3+/7XX5/PO5n/////3/R//P5//h99v//v//9VWa+ZcbKX+1y//////////////////"
     "//n//jb/8f/4///Ha0vvzbXzh/n/n/w"},
    {"Greek", U"αβγδεζηθικλμνξοπρςστυφχψωάέήίόύώϊϋΐΰ",
     "Cka0lccsV7Us1jln3/58b18SbV6Tabv//n3//pvi875/55///9M9/n/9ffXnJrVWP/3fcac0//r/565//50/6/98ii"
     "n/60c+8LcTyTakul/Om//8/467/v5////8lMXf/4/l/77iV/aT91//////5/558/P69/7/7qUkn/5Ujdj6blVbT9tk"
     "k98//h/a87iv6r/Sl8SdUn/9WnPWfT3O/8d/jabb//pf566/d6f/9ftabcv/5P0fcf/vX/iv/bcj1//h/566//6//c"
     "/8blU//51bnscbXzSbMu/1nf//p/6867356/f/8cjXv/9NWXdN0uOvzkXjbbs//H/+//++///////////9e9XMcy3k"
     "/hTnc0cf//p/6y69v57+r/7UUcn/5nl+z8jNqTa8d+29+//5/77k9/57/k/8LLen/+X/Hkf+nXP83/djUz//j/547/"
     "/7//n//nf///62j/7+jH8SL/v//////PidfdZaniiXcn/////9dW17zULjaZ8Vn/2///H8n/fcbniSfun/////5Njb"
     "d9bOUcT9uf/////Pjf1liS+aTXzt/////5/fny9iOaUT79v/////Xtl/f9Y/paf////////////5P///5/////////"
     "/////H/H/////////////////H////////////////////////////4"},
});

constexpr Signs kSigns = {
    U" \n-%.,:)('[]>=0<\"2/\u00A01_„5»«“;\t”|?*4`63$!+\\8^{…}9’7@#—&~–¿¡‘©•·°№²",
    "0223333444445555555555555555555666666666666666666677777777777777"};

constexpr auto kScripts = std::to_array<Script>({
    {"Japanese",
     U"まのしすーをでにンいイはがたル。るストてッなせれんフクさシ、プりときリパ定ァョジドディか"
     U"バラテ数タ用あみ行ロ名こ効使くケ指ア失表オレグら力マコ無示敗エムセブ合だ出鍵よサう除字変"
     U"キ更時も作文設け一書場メ入込っ削成つ不正ズウめ新存ダ取ュカ明値前終動ェ式え読実最有了対ユ"
     U"ザ要可解引モ号在中署ポォ関能証開わ以番得理報形検ベ先告情切全大間おそ現後期列同ャ選警必生"
     U"択方下準上チば覧ペ認見者法・発ヘソナべ的ワ内保限依分へ長個標制ぎ含決子視び化信日位再空ボ"
     U"外換続状目係自じ接ど始加意未態性利当複処確付記止ビ置追進や致応照優度割規語ハず既返部端完"
     U"代ネ待区常索各起ガ問所末ちむ注別済参通予整小月暗単順初刻替回受釈操壊本際ピ囲送消提ゴ重何"
     U"範改古例張次拡様算ホ題求許与移ニ類秒頭尾他域ミ領機御詳計密構持項共適手供結属組識管種去果"
     U"辞知違象縮析公固元多仮連修復展義査否副容特非扱配圧秘答味幅境功拒異強想画比環帰推較価印体"
     U"両避奨停素ご述今ツ人白戻試禁等補過集安説ょ略並面閉断直破省備量細権録演ヒ来競超遅互履歴排"
     U"由退調点側残基ろ論少ほ呼繰電型編件身物併抑装護留相押倍探づノ廃須詰誤年転評条短週向毎ゲ則"
     U"速ゼ差専約線ゾ親序命高渡冗延低考主棄二飛総曜己／候業満十殊桁辿埋英々逆立絶足緒隠降負抽経"
     U"器近般跡助格（）従版損半任右左浮良案影響平ぞ余登放言況話頼地事欄ぬ継和精離工欠充極添ぐ隔"
     U"曖昧製第深？途肢諾布監括弧色統乗層偽水挿似伝納築施「」質"},
    {"simplified Chinese",
     U"的件。：文，用数无不字个出法时有为选在名符行一项使包式定输设是软中分将目失录以可已或效标"
     U"败列错表置入密未到指被号参要误钥（取本信）进示除区于命和大令下安作如制过接前所新存系后、"
     U"显格建签了正备能值更解配动果打装息则间；上程对小称者模开读版您改关换空认状内量态写没同请"
     U"类成载序户会统变重据发此创从当证节默位最删它并非持现任度级加略告这组查多记回移理型获退每"
     U"需启码而串印器警转期限其自链第执处只块次找方操全部含支知来检生段准长达等忽结识保消务但止"
     U"复依应超书与由整赖地主磁运该相通归编义匹子试提头问始至析盘验何意之环算？调档缓隔返些性代"
     U"终别决必单源许日仅替修禁起求确挂且按向容属完注经志权份先缀给面须键页跳压少择排！连计否点"
     U"得题端导明合路控供功真销常引允缺升索机径管坏冲范锁带因缩续吊描服偏条述闭化待弃受库特们优"
     U"说预登吗也展构　助断交外测即原宽触卸损尝尾围语根公共例清扇函帮脚继道实境手案视秒比某绝添"
     U"束留见太响及好线扩强二卡片核覆送盖两十看搜他较零套然址递旧辑储总规放访工停随报把反照栈候"
     U"跟校都释详若护员策收体情拒话私末种样突首初词尽域似就推再尺寸足异具元议假细况致增殊图临直"
     U"破绑传硬流想享立钟括色赋历散还互仍补遇考附余资我里另价斜杠六询么各集那短戳废普才八步隐截"
     U"切风台摘远顺史逻做离基人速身去周卷虚尚纹高象柱拟邮满丢阻活循齐填白母电︰弹兼耗译队册边月"
     U"降车布荐寻省望简局充差像界形恢追天年阅剩平顶逗均维右额毁"},
    {"traditional Chinese",
     U"的。檔：用無，案不法定數有指時個式選在出使項為列目字一輸名入件是取設效中以行位或套鑰錯元"
     U"號錄除已「」者可要結示稱到令將誤標於金未符表作如新後資會所格失變下裝安敗開被前了訊建值和"
     U"本程組存果分則、讀參正大沒態這能過立寫顯動發請預相回更執證移狀版成簽連對引記進；非模重料"
     U"解同合生來啟從碼關間上串每區得空並小置加自期換任憑多束類告最第（理傳）編至警略制刪度內等"
     U"之準由序需章當系而與長找統依代次應別密方查限處它命載子語單您機只算完器你體其忽含部型求此"
     U"包轉份全工擇印始該整規明確何欄但性信境現跳意援支頭檢封否線主停級識把清真縮息接問保複塊服"
     U"提知排改經些權向端先屬題必情功伺少試快計尋配給容割超壓因原鍵控許做量銷隔撤操止且須決範替"
     U"太驗常尾放供群修綴源及按署衝義觸函即好偏閉管人備析地比受片條日通損續僅述頁缺化們圍也允樣"
     U"斷域嗎暫寬路磁增外環產達製兩匯係起若址運例實說疊憶棄毀終繼描零卡待視面收二留照文堆升舊徑"
     U"充帶消搜庫遞較特離白強注還演！持核反異秒假隨似　然緩送覆點看再公我私測登都迴歷十根冊末括"
     U"般？遠手裡嘗退儲首壞軟硬優叫斜平閱就他賴誌考註跟想報雜種心總附派陣某著擴切史況突湊索詞殊"
     U"譯尚詢釋員共道蓋碟初細延傾詳呼圈流段鎖推導併八紋足話致打復餘追尺寸認助盡交偵六基業護絕步"
     U"議具卷逾造網直輯脫互填台候卻據構另見才去影響唯階際介近鐘短剩摘戳省稿拒籤匙麼薦仍簡精順形"
     U"映差採滿紀調郵住母鏈節隱漏綁圖右物截聯佇遇伸適逗吻左術永"},
    {"Korean",
     U"다니이을지일수자를습하에는합로파시정가의기없한용리문력션사옵인스할은서어트않식으오입패터"
     U"출름부제나명면상대행음실드그있값만보아크바표고적설디령전작동열번해과렉호거치성요프경록모"
     U"키환위형소류절반중했도변와함세내필현여또단목개각태비분본버장링읽우숫주구재타처들데간무라"
     U"업미널된못때진연유종참조원최준되활추당든잘셸선생복백공접브안알택체야너신줄래었법며확십결"
     U"료메볼마항초따카심더템방려컨계같두끝텍예관존았배져검릭임산째증턴코페화속블게발른후룹순별"
     U"운레능규냅밀올월러건붙길빠새쓰범렬포닌저완헤날플외석받권삭술짜슬램찾색불앞맞역청허빈르딩"
     U"것립까매근듭및막갑갯닙쓸큼탭림짐꾸덮꿉케양취점특떤급략릿남교횟효씁퍼됩줍격혼뒤셋긴움닫컬"
     U"첫깁영벗큰향클히워언핑토울통넣말감피축돌폭테송콜직꿀렇집졌멈괄캘암뀌련퀀났난커많님덤탬꿈"
     U"롤약등찬탐웨채캐웁금압됨옴강달루글쪽륨넘켓춤갈납망량칭네럼손쉼노릅차론둘귀젝응질베회억병"
     U"곱티독누킹편논큽숨닥끊낼뜁될왔먼롭벳총뜀혹빌답렸충춥칸뷰액벨깅폼짝섹였견린풀롬짓께애델겠"
     U"걸잠므덱춘홈머끕평짧섬쿠텐잡던뜨험싱갖런왼객슷즘국쇄틀봅컴맨냄칙틸랫물희엔츠판황징곳냈둡"
     U"깨즉씩춰핸탈늘쳐뒷콘칩온측듬김씀년침옮란북천몇족웃죽닐끄큐맥률즈박팅눕율층홀뛸뢰친멤첩셈"
     U"써떻셉뀐눌승럽념놓뿐떄릴쌍잃폴깊킴뉴랍갔락슨덧묶빼좌잇쥴킵얼낸빙켭벤윈뀜맷살득획럭민느좋"
     U"덜균쉘멘픈쿼떠벽투웹켰맵셔뛰빨뜻핀듈썼첨닉담혀뀝끈냥밍곧"},
});

}  // namespace

std::span<const Language> languages() { return kLanguages; }
const Signs &signs() { return kSigns; }
std::span<const Script> scripts() { return kScripts; }

}  // namespace cli
