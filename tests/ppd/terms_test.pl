#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# terms_test.pl FOLDER: the translations in FOLDER mean what the English texts mean. Each row
# below has an English term and its words in every language: a translation has the words if the
# English text has the term, and only then. So no two texts are swapped. Numbers are the same in
# all languages.

use strict;
use warnings;
use utf8;
use open qw(:std :encoding(UTF-8));

my ($folder) = @ARGV;
my @kLanguages = qw(de es fr ja zh_CN);

my @terms;
while (my $line = <DATA>) {
    chomp $line;
    my ($english, @words) = split /\s*;\s*/, $line;
    die "terms_test: $line\n" unless @words == @kLanguages;
    push @terms, {english => qr/$english/, name => $english, map { $kLanguages[$_] => qr/$words[$_]/ } 0 .. $#words};
}
die "terms_test: no terms\n" unless @terms > 40;

my $faults = 0;
sub fault { print "$_[0]\n"; $faults++; }

for my $language (@kLanguages) {
    open my $in, '<', "$folder/po/$language.po" or die "terms_test: $language: $!\n";
    my $text = do { local $/; <$in> };
    my $count = 0;
    while ($text =~ /^msgid "(.+)"\nmsgstr "(.*)"$/mg) {
        my ($english, $translation) = ($1, $2);
        $count++;
        my @numbers = map { join ' ', sort /\d+/g } $english, $translation;
        fault("$language: '$english' and '$translation' have other numbers") if $numbers[0] ne $numbers[1];
        my $named = 0;
        for my $term (@terms) {
            my $has = $english =~ $term->{english};
            $named ||= $has;
            next if !!$has == !!($translation =~ $term->{$language});
            fault("$language: '$translation' does not mean '$english' ($term->{name})");
        }
        fault("no term for '$english'") unless $named;
    }
    fault("$language: $count texts") if $count < 80;
}
exit($faults ? 1 : 0);

__DATA__
before; \b[Vv]or\b; [Aa]ntes; \b[Aa]vant\b; 前; 前
after; \b[Nn]ach (jeder|dem)\b; tras|[Dd]espués; [Aa]près; ごとのカット|終了時|後; 后
lighter; heller; más claro; plus clair; 薄く; 浅
darker; dunkler; más oscuro; plus foncé; 濃く; 深
Darkness; Schwärzung; Oscuridad; Noirceur; 濃さ; 浓度
^As in the document; Wie im; Como en; Comme dans; とおり; 一致
No cut; Kein Schnitt; Sin corte; Pas de coupe; カットしない; 不切
Full; Voll; completo; totale; フル; 全切
Partial; Teil; parcial; partielle; パーシャル; 半切
Cutter; Abschneider; Cortador; Massicot; カッター; ^切纸$
[Cc]ut\b(?! away); [Ss]chnitt\b; [Cc]orte\b; [Cc]oupe\b; カット; [全半]切|[不后档]切纸
[Ff]eed; Vorschub; [Aa]vance\b; [Aa]vance\b; 紙送り; 走纸
No feed; Kein V; Sin av; Pas d'av; 送りなし; 不走
[Dd]rawer; [Ll]ade\b; [Cc]ajón; [Tt]iroir; ドロア; 钱箱
pulse; Impuls; Pulso; Impulsion; パルス; 脉冲
^Open; Druck öffnen; Abrir; Ouvrir; 開ける; 打印.打开
closed; Nicht öffnen; cerrado; fermé; 開けない; 不打开
Buzzer; Summer; Zumbador; sonore|Signal; ブザー; 蜂鸣
^Buzzer$; ^Summer$; ^Zumbador$; sonore; ^ブザー$; ^蜂鸣器$
Silent; Stumm; Silencio; Silencieux; 鳴らさない; 静音
^Sound; ^(Vor|Nach) (jeder Seite|dem Druck)$; ^(Antes|Después) de (cada|imprimir); ^(Avant|Après) (chaque page|l'impression)$; 鳴らす; 鸣响$
^Length; Tonlänge; Duración; Durée; 音の長さ; 鸣响长度
^Beeps; Töne; Pitidos; Bips; 回数; 次数
shortest; kürzesten; corto\); court\); 最短; 最短
longest; längsten; largo\); long\); 最長; 最长
[Pp]age\b; Seite; [Pp]ágina; [Pp]age; ページ; 页
each page; (?<!Tonlänge )(je|jeder) Seite$; (cada|por) página; (chaque|par) page; 各ページ|ページごと; 每页(?!鸣响长度)
[Dd]ocument; [Dd]okument; documento|corte final; document|coupe finale; 文書; 文档
label\b; Etikett; etiqueta; étiquette; ラベル; 标签
receipt; Bon; recibo; ticket; レシート; 小票
short receipt; kurzer; corto$; court$; 短い; 短小
long receipt; langer; largo$; long$; 長い; [长超]长?小票
very; sehr; muy; très; とても; 超
journal; Journal; diario; journal; ジャーナル; 流水
as printed; Druckbreite; impreso\)?; imprimée; 印字幅; 打印宽度
Blank; Leere; en blanco; vides; 余白; 空白
Cut away; Weglassen; Quitar; Supprimer; 取り除く; 去除
Keep; Behalten; Conservar; Garder; 残す; 保留
fixed length; feste Länge; largo fijo; longueur fixe; 固定長; 固定长度
Threshold; Schwellwert; Umbral; Seuil; しきい値; 阈值
pattern; [Mm]uster; Patrón; Trame\b; パターン; 图案
Ordered; Geordnet; ordenado; ordonnée; 組織的; 有序
error diffusion; Fehlerverteilung; Difusión de error; Diffusion d'erreur; 誤差拡散; 误差扩散
Burkes; Burkes; Burkes; Burkes; Burkes; Burkes
Stucki; Stucki; Stucki; Stucki; Stucki; Stucki
photos; Fotos; fotos; photos; 写真; 照片
Jarvis, Judice and Ninke; Jarvis, Judice und Ninke; Jarvis, Judice y Ninke; Jarvis, Judice et Ninke; Jarvis, Judice, Ninke; Jarvis、Judice、Ninke
Sierra; Sierra; Sierra; Sierra; Sierra; Sierra
Stevenson and Arce; Stevenson und Arce; Stevenson y Arce; Stevenson et Arce; Stevenson, Arce; Stevenson、Arce
Bayer; Bayer; Bayer; Bayer; Bayer; Bayer
Stencil; Schablone; Plantilla; Pochoir; ステンシル; 模板
Print direction; Druckrichtung; Dirección de impresión; Sens d'impression; 印字方向; 打印方向
Both; Beide; Ambas; Deux; 双方向; 双向
One direction; Eine R; Una d; Un seul; 単方向; 单向
Halftone; Rasterung; Medios tonos; Tramage; ハーフトーン; 半色调
Quality; Qualität; Calidad; Qualité; 品質; 质量
Media Size; Papierformat; Tamaño del papel; Format du papier; 用紙サイズ; 纸张尺寸
Color Mode; Farbmodus; Modo de color; Mode couleur; カラーモード; 颜色模式
Grayscale; Graustufen; Escala de grises; Niveaux de gris; グレースケール; 灰度
Resolution; Auflösung; Resolución; Résolution; 解像度; 分辨率
Diagnosis; Diagnose; Diagnóstico; Diagnostic; 診断; 诊断
Debug images; Prüfbilder; depuración; débogage; デバッグ; 调试
^Off; ^Aus$; ^No$; ^Non$; オフ; 关闭
^On \(; ^Ein \(; ^Sí; ^Oui; オン; 开启
