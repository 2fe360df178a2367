// SPDX-License-Identifier: MIT

export interface OpenOptions {
  /**
   * The character set of the notebook's texts, which the file does not name: "windows-1252" unless
   * given, "ISO-8859-1", "ASCII", or any that TextDecoder knows and that contains ASCII.
   */
  encoding?: string;
  /** The most bytes that a reading of the notebook may hold: 1 GiB unless given, 0 for no limit. */
  memoryLimit?: number;
  /** Opens a damaged notebook as far as it can be read; `Notebook.damage` then says what is wrong. */
  salvage?: boolean;
}

/** Opens a notebook. The bytes are copied. Rejects with a QpsError. */
export function open(source: Uint8Array | ArrayBuffer | Blob,
                     options?: OpenOptions): Promise<Notebook>;

export type Reason =
  | "not-a-notebook"  // another kind of file; the message names the kind where it can be told
  | "empty"
  | "protected"  // by a password
  | "damaged"  // cut short, or its records cannot be followed; see OpenOptions.salvage
  | "memory-limit"  // or another limit that one notebook has
  | "encoding"  // OpenOptions.encoding is not known
  | "closed"  // Notebook.close was called
  | "internal";  // the reader itself failed; the next call works with a new instance of it

/** Why something could not be read. `message` is one line, without the file's name. */
export class QpsError extends Error {
  readonly reason: Reason;
}

export interface Notebook {
  /** In the file's order. */
  readonly sheets: readonly Sheet[];
  readonly fileKind: "plain-notebook" | "compound-notebook";
  readonly formatVersion: number;
  /** What is missing of a notebook that was opened with `salvage`, or null. */
  readonly damage: string | null;
  /** The first worksheet of this name, or null. */
  sheet(name: string): Sheet | null;
  /** The page that `qps html` writes. */
  toHtml(title?: string): string;
  /** The workbook that `qps xlsx` writes. */
  toXlsx(): Workbook;
  /** Gives the memory back. Whatever is called after it throws. */
  close(): void;
}

export interface Workbook {
  readonly bytes: Uint8Array;  // of an .xlsx file
  /** What the workbook does not show as the notebook does, or null. */
  readonly warning: string | null;
}

export interface Sheet extends Iterable<Cell> {
  readonly index: number;  // from 0
  readonly name: string;
  /** The cells one by one, in the file's order. Several sheets may be read at a time. */
  cells(): Generator<Cell, void, void>;
  /** The cell of a place, or null. Rows and columns count from 1. Reads the sheet up to its end. */
  cell(row: number, column: number): Cell | null;
  /** What `qps csv` writes for the worksheet. */
  toCsv(): string;
}

export type Kind = "blank" | "number" | "text" | "error" | "date" | "time" | "datetime";

export interface Cell {
  readonly row: number;  // from 1
  readonly column: number;  // from 1
  readonly address: string;  // "B7"
  /** What the cell shows; null when it shows nothing. */
  readonly text: string | null;
  readonly kind: Kind;
  /** A number, the serial of a date or time (days since 1899-12-30), a text, or null. */
  readonly value: number | string | null;
  /** Of a date, time or both, in no time zone: "1994-07-08", "T09:30:00", "1994-07-08T09:30:00". */
  readonly date?: string;
  /** Whether a formula computed the value. */
  readonly isFormula: boolean;
  readonly format: NumberFormat;
  readonly style: Style;
}

export interface NumberFormat {
  readonly code: number;  // 16, 32, 48, 64, 80, 96 and 112 are families; from 113 the notebook's own
  readonly decimals: number;
  readonly showsDate: boolean;
  readonly showsTime: boolean;
  readonly text?: string;  // of the notebook's own format
  readonly styleName: string;  // of the named style that the cell's is based on, or ""
}

export type Colour = string | null;  // "#rrggbb"
export type Side = "left" | "top" | "right" | "bottom";

export interface Style {
  readonly alignment: {
    readonly horizontal: "general" | "left" | "centre" | "right" | "centreAcross";
    readonly vertical: "default" | "top" | "centre" | "bottom";
  };
  readonly fillColour: Colour;
  readonly textColour: Colour;
  readonly borders: { readonly [side in Side]?: {
    readonly line: "thin" | "thick" | "double";
    readonly colour: Colour;
  } };
  readonly font: {
    readonly name: string;
    readonly size: number;  // in points
    readonly bold: boolean;
    readonly italic: boolean;
    readonly underline: boolean;
    readonly strikeOut: boolean;
  } | null;
}
