/* The message above the list. It stays until the user closes it or tries again. */
import { button, el } from '../common/dom.js';
import { icon } from '../common/icons.js';
import { t } from '../common/texts.js';

export class Notice {
  /** `closed` runs when the user has closed the message. */
  constructor(banner, closed) {
    this.banner = banner;
    this.closed = closed;
  }

  get isShown() {
    return !this.banner.hidden;
  }

  /** `retry` runs when the user tries again. */
  show(text, retry) {
    const close = () => {
      this.hide();
      this.closed();
    };
    this.banner.replaceChildren(
      icon('warn'),
      el('span', { text }),
      button(t('retry'), { class: 'fm-button', press: retry }),
      button(t('close'), { image: 'close', bare: true, class: 'fm-quiet', press: close }),
    );
    this.banner.hidden = false;
  }

  hide() {
    this.banner.hidden = true;
  }

  focus() {
    this.banner.querySelector('button').focus();
  }
}
