import type { Theme } from "vitepress";
import DefaultTheme from "vitepress/theme-without-fonts";
import { h } from "vue";

import LivePart from "./LivePart.vue";
import NotFound from "./NotFound.vue";

import "./style.css";
import "./live.css";

export default {
  extends: DefaultTheme,
  Layout: () => h(DefaultTheme.Layout, null, { "not-found": () => h(NotFound) }),
  enhanceApp: ({ app }) => void app.component("LivePart", LivePart),
} satisfies Theme;
